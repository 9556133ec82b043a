#include <nox/utils/DynamicObject.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/Decimal.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/StringTable.h>

#include <cstring>
#include <string_view>
#include <utility>

namespace nox::utils {

namespace {

using Node = details::DynamicObjectNode;

constexpr unsigned int defaultBlockSize = 128;
constexpr unsigned int defaultStringSeed = 100;
// "[4294967295]" and a spare byte.
constexpr unsigned int arrayKeyCapacity = 16;

bool isContainer(std::uint32_t type) { return type == type::array || type == type::object; }

// Whether a stored type code is one of type::Type.
bool isKnownType(std::uint32_t type) { return type <= type::object; }

// A stack that lives on the machine stack while small; the trie walks below use it so
// that neither long keys nor deep tries recurse or allocate in the common case.
template <class T, std::size_t InlineCapacity = 64>
class SmallStack {
 public:
  void push(const T& value) {
    if (size_ < InlineCapacity) {
      inline_[size_] = value;
    } else {
      overflow_.push_back(value);
    }
    ++size_;
  }
  void pop() {
    --size_;
    if (size_ >= InlineCapacity) overflow_.pop_back();
  }
  T& operator[](std::size_t index) {
    return index < InlineCapacity ? inline_[index] : overflow_[index - InlineCapacity];
  }
  T& top() { return (*this)[size_ - 1]; }
  bool empty() const { return size_ == 0; }
  std::size_t size() const { return size_; }

 private:
  T inline_[InlineCapacity];
  Vector<T> overflow_;
  std::size_t size_ = 0;
};

// `prefix` followed by a name, assembled on the stack for the usual short names.
class PrefixedKey {
 public:
  PrefixedKey(char prefix, const char* name, unsigned int length) : size_(length + 1) {
    char* data = inline_;
    if (size_ > sizeof inline_) {
      overflow_.resize(size_);
      data = overflow_.data();
    }
    data[0] = prefix;
    std::memcpy(data + 1, name, length);
    data_ = data;
  }
  PrefixedKey(const PrefixedKey&) = delete;
  PrefixedKey& operator=(const PrefixedKey&) = delete;

  const char* data() const { return data_; }
  unsigned int size() const { return size_; }

 private:
  char inline_[96];
  Vector<char> overflow_;
  const char* data_;
  unsigned int size_;
};

std::string_view textOf(const char* text, unsigned int length) {
  return text != nullptr ? std::string_view(text, length) : std::string_view();
}

}  // namespace

// ---------------------------------------------------------------------------------------
// Construction and whole-object operations.

DynamicObject::DynamicObject()
    : blockAllocator_(NOX_NEW NodeAllocator(defaultBlockSize)),
      stringTable_(NOX_NEW StringTable(defaultStringSeed)),
      owning_(true) {
  initializeBlockGeometry();
  addRootProperty();
}

DynamicObject::DynamicObject(NodeAllocator& allocator, StringTable& strings)
    : blockAllocator_(&allocator), stringTable_(&strings), owning_(false) {
  initializeBlockGeometry();
  addRootProperty();
}

DynamicObject::DynamicObject(const DynamicObject& other)
    : blockAllocator_(NOX_NEW NodeAllocator(other.blockSize_)),
      stringTable_(NOX_NEW StringTable(*other.stringTable_)),
      owning_(true) {
  initializeBlockGeometry();
  doMemoryCopy(other);
}

DynamicObject::DynamicObject(const Ref& other)
    : blockAllocator_(other.get().blockAllocator_), stringTable_(other.get().stringTable_), owning_(false) {
  initializeBlockGeometry();
  doMemoryCopy(other.get());
}

DynamicObject& DynamicObject::operator=(const DynamicObject& other) {
  if (this == &other) return *this;
  doClear();
  if (blockSize_ == other.blockSize_ && stringTable_ == other.stringTable_) {
    doMemoryCopy(other);
  } else {
    // Handles mean nothing across block sizes and string hashes nothing across tables:
    // rebuild property by property instead.
    addRootProperty();
    copySubtree(root_, other, other.root_);
  }
  return *this;
}

DynamicObject::~DynamicObject() {
  doClear();
  if (owning_) {
    NOX_DELETE(stringTable_);
    NOX_DELETE(blockAllocator_);
  }
}

void DynamicObject::initializeBlockGeometry() {
  blockSize_ = blockAllocator_->getBlockSize();
  blockShift_ = 32;
  if (blockSize_ != 0 && (blockSize_ & (blockSize_ - 1)) == 0) {
    blockShift_ = 0;
    while ((1u << blockShift_) != blockSize_) ++blockShift_;
  }
  usedInLastBlock_ = blockSize_;
}

bool DynamicObject::empty() const {
  const Node* value = findValueNode(root_);
  return value == nullptr || value->value.type == type::null;
}

void DynamicObject::clear() {
  doClear();
  addRootProperty();
}

void DynamicObject::doClear() {
  for (Node* block : blocks_) blockAllocator_->releaseBlock(block);
  blocks_.clear();
  freeListHead_ = 0;
  usedInLastBlock_ = blockSize_;
}

void DynamicObject::doMemoryCopy(const DynamicObject& source) {
  blocks_.reserve(source.blocks_.size());
  for (const Node* sourceBlock : source.blocks_) {
    Node* block = blockAllocator_->acquireBlock();
    std::memcpy(static_cast<void*>(block), sourceBlock, static_cast<std::size_t>(blockSize_) * sizeof(Node));
    blocks_.push_back(block);
  }
  root_ = source.root_;
  usedInLastBlock_ = source.usedInLastBlock_;
  // The source's free list is deliberately not taken over: its nodes stay unused here.
  freeListHead_ = 0;
}

unsigned int DynamicObject::countFreeNodes() const {
  unsigned int count = 0;
  for (unsigned int handle = freeListHead_; handle != 0; handle = getNode(handle)->split.greater) ++count;
  return count;
}

unsigned int DynamicObject::countUsedNodes() const {
  const unsigned int carved = static_cast<unsigned int>(blocks_.size()) * blockSize_ - (blockSize_ - usedInLastBlock_);
  return carved - countFreeNodes();
}

// ---------------------------------------------------------------------------------------
// Nodes.

Node* DynamicObject::reportBlockIndexOutOfRange() {
  NOX_FAIL("Block index out of range");
  return nullptr;
}

Node* DynamicObject::allocateNode(char splitByte, unsigned int& handle) {
  Node* node;
  if (freeListHead_ != 0) {
    handle = freeListHead_;
    node = getNode(handle);
    freeListHead_ = node->split.greater;
  } else {
    if (usedInLastBlock_ >= blockSize_) {
      blocks_.push_back(blockAllocator_->acquireBlock());
      usedInLastBlock_ = 0;
    }
    node = blocks_.back() + usedInLastBlock_;
    handle = static_cast<unsigned int>(blocks_.size() - 1) * blockSize_ + usedInLastBlock_ + 1;
    ++usedInLastBlock_;
  }
  std::memset(static_cast<void*>(node), 0, sizeof(Node));
  node->split.splitByte = static_cast<std::int8_t>(splitByte);
  return node;
}

Node* DynamicObject::allocateValueNode(unsigned int& handle) {
  Node* node = allocateNode(0, handle);
  node->value.flag = 1;
  return node;
}

void DynamicObject::deallocateNode(Node* node, unsigned int handle) {
  const unsigned int lastCarved = static_cast<unsigned int>(blocks_.size() - 1) * blockSize_ + usedInLastBlock_;
  if (usedInLastBlock_ > 0 && handle == lastCarved) {
    --usedInLastBlock_;
  } else {
    node->split.greater = freeListHead_;
    freeListHead_ = handle;
  }
}

void DynamicObject::addRootProperty() {
  unsigned int entryHandle;
  Node* entry = allocateNode(7, entryHandle);
  NOX_ASSERT(entry != nullptr, "Unable to add the root p node.");
  unsigned int rootHandle;
  Node* root = allocateNode(0, rootHandle);
  NOX_ASSERT(root != nullptr, "Unable to add the root split node.");
  if (entry == nullptr || root == nullptr) return;
  // Node 1 leads to the root terminator but no search starts there; it keeps the root
  // handle away from 1.
  entry->split.equal = rootHandle;
  root_ = rootHandle;
  unsigned int valueHandle;
  allocateValueNode(valueHandle);
  root->split.equal = valueHandle;
}

// ---------------------------------------------------------------------------------------
// Trie search, insertion and erasure. Key bytes compare with split bytes as signed bytes.

Node* DynamicObject::findNode(unsigned int start, const char* key, unsigned int length, bool toTerminator,
                              unsigned int& handle) const {
  // The walk keeps its handle in a local: storing through `handle` on every step would
  // make the compiler reload the block table each time. (Branches beat a branchless
  // three-way select here: lookups of neighbouring paths take the same turns.)
  NodeCursor nodes(*this);
  unsigned int current = start;
  unsigned int position = 0;
  while (current != 0 && position < length) {
    const Node* node = nodes.at(current);
    if (node == nullptr) {
      current = 0;
      break;
    }
    if (node->isValueNode()) {
      // A key byte has run into a value: its payload is no link to follow. Past a zero
      // byte that is only a key no property can have; anywhere else the trie is broken.
      NOX_ASSERT(position > 0 && key[position - 1] == 0, "unclean state during trie search - detected leaf node");
      handle = 0;
      return nullptr;
    }
    const std::int8_t byte = static_cast<std::int8_t>(key[position]);
    if (byte < node->split.splitByte) {
      current = node->split.less;
    } else if (byte > node->split.splitByte) {
      current = node->split.greater;
    } else {
      ++position;
      // A search to the terminator stays on the node of the last key byte.
      if (position == length && toTerminator) break;
      current = node->split.equal;
    }
  }
  Node* node = getNode(current);
  if (node == nullptr || !toTerminator || node->split.splitByte == 0) {
    handle = node != nullptr ? current : 0;
    return node;
  }
  // `node` holds the last key byte; its terminator heads the next position.
  for (current = node->split.equal; current != 0; current = node->split.less) {
    node = getNode(current);
    if (node == nullptr) break;
    if (node->split.splitByte == 0) {
      handle = current;
      return node;
    }
  }
  handle = 0;
  return nullptr;
}

Node* DynamicObject::findValueNode(unsigned int start, const char* key, unsigned int length, unsigned int& terminator,
                                   unsigned int& valueHandle) const {
  Node* node = findNode(start, key, length, true, terminator);
  Node* value = findValueNode(node, valueHandle);
  if (value == nullptr) terminator = 0;
  return value;
}

Node* DynamicObject::reportInvalidProperty() {
  NOX_FAIL("Invalid property");
  return nullptr;
}

Node* DynamicObject::findOrInsertSplitNode(unsigned int* link, char byte) {
  const std::int8_t wanted = static_cast<std::int8_t>(byte);
  while (*link != 0) {
    Node* node = getNode(*link);
    if (node == nullptr || node->isValueNode()) return nullptr;
    if (wanted == node->split.splitByte) return node;
    link = wanted < node->split.splitByte ? &node->split.less : &node->split.greater;
  }
  unsigned int handle;
  Node* node = allocateNode(byte, handle);
  *link = handle;
  return node;
}

Node* DynamicObject::addProperty(unsigned int start, const char* key, unsigned int length, bool& created,
                                 unsigned int& terminator, unsigned int& valueHandle) {
  unsigned int startLink = start;
  return addPropertyAt(&startLink, key, length, created, terminator, valueHandle);
}

Node* DynamicObject::addPropertyAt(unsigned int* link, const char* key, unsigned int length, bool& created,
                                   unsigned int& terminator, unsigned int& valueHandle) {
  created = false;
  terminator = 0;
  valueHandle = 0;
  NodeCursor nodes(*this);
  unsigned int position = 0;
  while (position < length && *link != 0) {
    Node* node = nodes.at(*link);
    // A key that runs into a value continues past some key's terminator byte.
    if (node == nullptr || node->isValueNode()) return nullptr;
    const std::int8_t byte = static_cast<std::int8_t>(key[position]);
    if (byte == node->split.splitByte) {
      ++position;
      link = &node->split.equal;
    } else {
      link = byte < node->split.splitByte ? &node->split.less : &node->split.greater;
    }
  }
  for (; position < length; ++position) {
    unsigned int handle;
    Node* node = allocateNode(key[position], handle);
    *link = handle;
    link = &node->split.equal;
  }
  Node* end = findOrInsertTerminator(link, terminator);
  if (end == nullptr) return nullptr;
  if (end->split.equal == 0) {
    allocateValueNode(valueHandle);
    end->split.equal = valueHandle;
    created = true;
    return getNode(valueHandle);
  }
  valueHandle = end->split.equal;
  Node* value = getNode(valueHandle);
  NOX_ASSERT(value != nullptr && value->isValueNode(), "Sanity check, that this is a valid node.");
  return value;
}

Node* DynamicObject::findOrInsertTerminator(unsigned int* link, unsigned int& handle) {
  for (unsigned int* search = link; *search != 0;) {
    Node* node = getNode(*search);
    if (node == nullptr || node->isValueNode()) return nullptr;
    if (node->split.splitByte == 0) {
      handle = *search;
      return node;
    }
    search = node->split.splitByte > 0 ? &node->split.less : &node->split.greater;
  }
  // The terminator becomes the root of its position: the keys already there are split
  // into those ordered before it (bytes 0x80..0xFF) and those after. Everything that
  // continues the key (names that extend it, the separators of its children) then lies
  // below the terminator, which is where child operations and iteration look for it.
  unsigned int lessRoot = 0;
  unsigned int greaterRoot = 0;
  SmallStack<unsigned int*> lessSpine;
  SmallStack<unsigned int*> greaterSpine;
  unsigned int* lessTail = &lessRoot;
  unsigned int* greaterTail = &greaterRoot;
  for (unsigned int current = *link; current != 0;) {
    Node* node = getNode(current);
    if (node->split.splitByte < 0) {
      *lessTail = current;
      lessSpine.push(lessTail);
      lessTail = &node->split.greater;
      current = node->split.greater;
    } else {
      *greaterTail = current;
      greaterSpine.push(greaterTail);
      greaterTail = &node->split.less;
      current = node->split.less;
    }
  }
  *lessTail = 0;
  *greaterTail = 0;
  // Cutting the spines may leave a node of an erased key (no equal link) without any
  // link: nothing would ever prune it, so it goes now.
  releaseLinklessNodes(lessSpine);
  releaseLinklessNodes(greaterSpine);
  Node* node = allocateNode(0, handle);
  node->split.less = lessRoot;
  node->split.greater = greaterRoot;
  *link = handle;
  return node;
}

template <class Links>
void DynamicObject::releaseLinklessNodes(Links& spine) {
  while (!spine.empty()) {
    unsigned int* holder = spine.top();
    Node* node = getNode(*holder);
    if (node->split.less != 0 || node->split.equal != 0 || node->split.greater != 0) return;
    deallocateNode(node, *holder);
    *holder = 0;
    spine.pop();
  }
}

bool DynamicObject::eraseProperty(unsigned int* link, const char* key, unsigned int length, bool& erased) {
  // The links from `link` down to the value node; nodes are released bottom-up.
  SmallStack<unsigned int*> path;
  unsigned int position = 0;
  while (true) {
    Node* node = getNode(*link);
    if (node == nullptr) return false;
    path.push(link);
    if (node->isValueNode()) {
      if (position >= length) break;
      // The value of another key (the rest of this one ran past a zero byte): it stays.
      NOX_FAIL("Value node reached before the full exploration of the key.");
      return false;
    }
    // An exhausted key homes in on the terminator (byte 0).
    const std::int8_t byte = position < length ? static_cast<std::int8_t>(key[position]) : 0;
    if (byte == node->split.splitByte) {
      if (position < length) ++position;
      link = &node->split.equal;
    } else {
      link = byte < node->split.splitByte ? &node->split.less : &node->split.greater;
    }
  }
  erased = true;
  deallocateNode(getNode(*link), *link);
  *link = 0;
  path.pop();
  releaseLinklessNodes(path);
  return path.empty();
}

bool DynamicObject::eraseProperty(unsigned int start, const char* key, unsigned int length) {
  if (key == nullptr) {
    NOX_FAIL("Null string given as a key");
    return false;
  }
  if (requireValueNode(start) == nullptr) return false;
  // The start keeps its value node, so it is never released through this local link.
  unsigned int startLink = start;
  bool erased = false;
  eraseProperty(&startLink, key, length, erased);
  return erased;
}

// ---------------------------------------------------------------------------------------
// Keys and lookup.

unsigned int DynamicObject::formatArrayKey(char* buffer, unsigned int index) {
  NOX_ASSERT(index < getMaximumArraySize(), "Array indices must be less than " << getMaximumArraySize() << ".");
  char digits[10];
  unsigned int count = 0;
  do {
    digits[count++] = static_cast<char>('0' + index % 10);
    index /= 10;
  } while (index != 0);
  unsigned int length = 0;
  buffer[length++] = '[';
  while (count != 0) buffer[length++] = digits[--count];
  buffer[length++] = ']';
  return length;
}

bool DynamicObject::checkKey(const char* key, unsigned int length) {
  return key != nullptr && length != 0 && details::findReservedKeyByte(key, length) == 0;
}

unsigned int DynamicObject::getProperty(const char* path, unsigned int length) const {
  if (path == nullptr) {
    NOX_FAIL("Null string given as a key");
    return 0;
  }
  unsigned int terminator;
  unsigned int valueHandle;
  findValueNode(root_, path, length, terminator, valueHandle);
  return terminator;
}

unsigned int DynamicObject::getPropertyAsserts(const char* path, unsigned int length) const {
  const unsigned int property = getProperty(path, length);
  NOX_ASSERT(property != 0 || path == nullptr, "Unable to find property for the key '" << textOf(path, length) << "'");
  return property;
}

// ---------------------------------------------------------------------------------------
// Types and values.

bool DynamicObject::isTypeCompatible(unsigned int property, type::Type requested) const {
  const Node* value = findValueNode(property);
  const std::uint32_t type = value != nullptr ? value->value.type : std::uint32_t{type::null};
  if (type > type::object) {
    // The message names the requested type, not the stored code: hosts match on this
    // text as it has always been written.
    NOX_FAIL(requested << "is an unknown nox::utils::type.");
    return false;
  }
  return areTypesCompatible(static_cast<type::Type>(type), requested);
}

namespace {

// The assertion of a getter that meets a type it cannot convert.
void reportWrongType(std::uint32_t storedType, const char* message) {
  if (isKnownType(storedType)) {
    NOX_FAIL(message);
  } else {
    NOX_FAIL(storedType << " is an unknown nox::utils::type");
  }
}

}  // namespace

std::int64_t DynamicObject::convertToInt(const Node* value) {
  if (value == nullptr) return 0;
  if (value->value.type == type::real) return details::truncateToInt64(value->getRealPayload());
  reportWrongType(value->value.type, "Not an integer or a compatible type");
  return 0;
}

double DynamicObject::convertToReal(const Node* value) {
  if (value == nullptr) return 0.0;
  if (value->value.type == type::integer) return static_cast<double>(static_cast<std::int64_t>(value->getPayload()));
  reportWrongType(value->value.type, "Not a real or a compatible type");
  return 0.0;
}

bool DynamicObject::reportNotBool(const Node* value) {
  if (value == nullptr) return false;
  reportWrongType(value->value.type, "Not a boolean or a compatible type");
  return false;
}

std::uint64_t DynamicObject::getStringHash(unsigned int property) const {
  const Node* value = requireValueNode(property);
  if (value == nullptr) return 0;
  if (value->value.type == type::string) return value->getPayload();
  reportWrongType(value->value.type, "Not a string or a compatible type");
  return 0;
}

const char* DynamicObject::reportNotString(const Node* value) {
  if (value == nullptr) return nullptr;
  reportWrongType(value->value.type, "Not a string or a compatible type");
  return nullptr;
}

void DynamicObject::retrieveValue(unsigned int property, DynamicValue& out) const {
  const Node* value = requireValueNode(property);
  if (value == nullptr) return;
  switch (value->value.type) {
    case type::null:
      out.reset();
      return;
    case type::integer:
      out.setInt(static_cast<std::int64_t>(value->getPayload()));
      return;
    case type::real:
      out.setReal(value->getRealPayload());
      return;
    case type::string:
      out.setString(stringTable_->retrieve(value->getPayload(), ""));
      return;
    case type::boolean:
      out.setBool(value->getPayload() == 0);
      return;
    default:
      NOX_FAIL(value->value.type << " is an unknown nox::utils::type");
      return;
  }
}

Node* DynamicObject::prepareScalarWrite(unsigned int property) {
  Node* value = requireValueNode(property);
  if (value != nullptr && isContainer(value->value.type) && value->getPayload() > 0) resetProperty(property);
  return value;
}

void DynamicObject::writeScalar(unsigned int property, type::Type type, std::uint64_t payload) {
  Node* value = prepareScalarWrite(property);
  if (value == nullptr) return;
  value->value.type = type;
  value->setPayload(payload);
}

void DynamicObject::setInt(unsigned int property, std::int64_t value) {
  writeScalar(property, type::integer, static_cast<std::uint64_t>(value));
}

void DynamicObject::setReal(unsigned int property, double value) {
  writeScalar(property, type::real, Node::encodeReal(value));
}

void DynamicObject::setBool(unsigned int property, bool value) { writeScalar(property, type::boolean, value ? 0 : 1); }

void DynamicObject::setString(unsigned int property, const char* text, unsigned int textLength) {
  if (text == nullptr) {
    NOX_FAIL("Null string given as a key");
    return;
  }
  Node* value = prepareScalarWrite(property);
  if (value == nullptr) return;
  value->value.type = type::string;
  value->setPayload(stringTable_->add(text, textLength, nullptr));
}

void DynamicObject::setValue(unsigned int property, const DynamicValue& value) {
  if (requireValueNode(property) == nullptr) return;
  switch (value.getType()) {
    case type::integer:
      setInt(property, value.getInt());
      return;
    case type::real:
      setReal(property, value.getReal());
      return;
    case type::string:
      setString(property, value.getString(), value.getStringLength());
      return;
    case type::boolean:
      setBool(property, value.getBool());
      return;
    default:
      resetProperty(property);
      return;
  }
}

// ---------------------------------------------------------------------------------------
// Children.

unsigned int DynamicObject::countChildren(unsigned int property) const {
  const Node* value = requireValueNode(property);
  if (value == nullptr) return 0;
  if (isContainer(value->value.type)) return static_cast<unsigned int>(value->getPayload());
  NOX_ASSERT(isKnownType(value->value.type), value->value.type << "is an unknown nox::utils::type.");
  return 0;
}

Node* DynamicObject::insertChildKey(unsigned int parent, const char* name, unsigned int length, bool& created,
                                    unsigned int& child, unsigned int& valueHandle) {
  if (parent == root_) return addProperty(root_, name, length, created, child, valueHandle);
  // A child's key continues the parent's path with "." and its name: the separator
  // node sits in the binary tree right below the parent's terminator.
  Node* terminator = getNode(parent);
  Node* separator = findOrInsertSplitNode(&terminator->split.greater, '.');
  if (separator == nullptr) return nullptr;
  return addPropertyAt(&separator->split.equal, name, length, created, child, valueHandle);
}

unsigned int DynamicObject::addChild(unsigned int parent, const char* name, unsigned int nameLength) {
  if (name == nullptr) {
    NOX_FAIL("Null string given as a key");
    return 0;
  }
  Node* parentValue = requireValueNode(parent);
  if (parentValue == nullptr) return 0;
  const std::uint32_t parentType = parentValue->value.type;
  if (parentType != type::object && parentType != type::null && !isTypeCompatible(parent, type::object)) {
    NOX_FAIL("The given property is not an object.");
    return 0;
  }
  // Children of the root may be named with the leading full stop of a relative path.
  if (parent == root_ && nameLength != 0 && name[0] == '.') {
    ++name;
    --nameLength;
  }
  if (nameLength == 0) return 0;
  // Like an empty name, a name with a zero byte cannot be a key: the zero byte is what
  // ends a key in the trie.
  if (std::memchr(name, 0, nameLength) != nullptr) return 0;
  // An invalid name is reported, and added all the same.
  NOX_ASSERT(checkKey(name, nameLength), "The given child key, " << textOf(name, nameLength) << " is invalid.");
  bool created;
  unsigned int child;
  unsigned int valueHandle;
  if (insertChildKey(parent, name, nameLength, created, child, valueHandle) == nullptr) {
    NOX_FAIL("Unable to add a child.");
    return 0;
  }
  if (created) {
    parentValue->setPayload(parentValue->getPayload() + 1);
    parentValue->value.type = type::object;
  }
  return child;
}

unsigned int DynamicObject::findChild(unsigned int parent, const char* name, unsigned int nameLength) const {
  if (name == nullptr || nameLength == 0) return 0;
  unsigned int start = parent;
  if (parent != root_ && findNode(parent, ".", 1, false, start) == nullptr) return 0;
  unsigned int child;
  unsigned int valueHandle;
  findValueNode(start, name, nameLength, child, valueHandle);
  return child;
}

unsigned int DynamicObject::getChild(unsigned int parent, const char* name, unsigned int nameLength) const {
  if (name == nullptr) {
    NOX_FAIL("Null string given as a key");
    return 0;
  }
  if (requireValueNode(parent) == nullptr) return 0;
  return findChild(parent, name, nameLength);
}

bool DynamicObject::hasChild(unsigned int parent, const char* name, unsigned int nameLength) const {
  return getChild(parent, name, nameLength) != 0;
}

unsigned int DynamicObject::getChild(unsigned int parent, unsigned int index) const {
  const Node* value = requireValueNode(parent);
  if (value == nullptr) return 0;
  switch (value->value.type) {
    case type::array: {
      char key[arrayKeyCapacity];
      unsigned int element;
      unsigned int valueHandle;
      findValueNode(parent, key, formatArrayKey(key, index), element, valueHandle);
      return element;
    }
    case type::object:
      return findObjectChildByIndex(parent, index);
    default:
      NOX_ASSERT(isKnownType(value->value.type), value->value.type << " is an unknown nox::utils::type");
      return 0;
  }
}

unsigned int DynamicObject::findObjectChildByIndex(unsigned int parent, unsigned int index) const {
  // An in-order walk of everything that continues the parent's path, counting value
  // nodes. Inside a name the walk does not enter grandchildren or elements.
  struct Frame {
    unsigned int handle;
    unsigned int from;  // the node whose equal link led here
    unsigned char stage;
    bool insideName;
  };
  const Node* terminator = getNode(parent);
  SmallStack<Frame> stack;
  stack.push({terminator->split.greater, 0, 0, false});
  stack.push({terminator->split.less, 0, 0, false});
  unsigned int seen = 0;
  while (!stack.empty()) {
    const Frame frame = stack.top();
    const Node* node = getNode(frame.handle);
    if (node == nullptr) {
      stack.pop();
      continue;
    }
    if (node->isValueNode()) {
      if (seen++ == index) return frame.from;
      stack.pop();
      continue;
    }
    switch (frame.stage) {
      case 0:
        stack.top().stage = 1;
        stack.push({node->split.less, 0, 0, frame.insideName});
        break;
      case 1:
        stack.top().stage = 2;
        if (!frame.insideName || !details::isKeySeparator(node->split.splitByte)) {
          stack.push({node->split.equal, frame.handle, 0, true});
        }
        break;
      default:
        stack.top() = {node->split.greater, 0, 0, frame.insideName};
        break;
    }
  }
  return 0;
}

bool DynamicObject::eraseChild(unsigned int parent, const char* name, unsigned int nameLength) {
  if (name == nullptr) {
    NOX_FAIL("Null string given as a key");
    return false;
  }
  if (nameLength == 0) return false;
  if (parent == root_) return eraseNamedChild(parent, name, nameLength);
  // From any other parent the search runs through its "." separator.
  PrefixedKey key('.', name, nameLength);
  return eraseNamedChild(parent, key.data(), key.size());
}

bool DynamicObject::eraseNamedChild(unsigned int parent, const char* key, unsigned int length) {
  unsigned int child;
  unsigned int valueHandle;
  if (findValueNode(parent, key, length, child, valueHandle) == nullptr) return false;
  resetProperty(child);
  unsigned int parentLink = parent;
  bool erased = false;
  eraseProperty(&parentLink, key, length, erased);
  Node* parentValue = requireValueNode(parent);
  if (parentValue == nullptr) return false;
  const std::uint64_t count = parentValue->getPayload();
  if (count > 0) parentValue->setPayload(count - 1);
  // Like an array resized to 0, an object without children is null again.
  if (count <= 1) parentValue->value.type = type::null;
  return true;
}

bool DynamicObject::eraseChild(unsigned int array, unsigned int index) {
  Node* arrayValue = requireValueNode(array);
  if (arrayValue == nullptr) return false;
  const std::uint32_t type = arrayValue->value.type;
  if (type != type::array && type != type::null) {
    if (isKnownType(type)) {
      NOX_FAIL("Not an array.");
    } else {
      NOX_FAIL(type << " is an unknown nox::utils::type");
    }
    return false;
  }
  const std::uint64_t count = arrayValue->getPayload();
  if (type == type::null || index >= count) return true;

  // Each element's value hangs from its terminator's equal link and its descendants from
  // its greater link, so swapping terminator records moves whole elements: the erased
  // one travels to the last index.
  char key[arrayKeyCapacity];
  Node* previous = nullptr;
  unsigned int last = 0;
  for (std::uint64_t i = index; i < count; ++i) {
    unsigned int element;
    Node* node = findNode(array, key, formatArrayKey(key, static_cast<unsigned int>(i)), true, element);
    if (node == nullptr || node->split.splitByte != 0 || node->split.less != 0) {
      NOX_FAIL("Invalid state, " << element << " is not a valid property node.");
      return false;
    }
    if (node->split.greater != 0) {
      const Node* separator = getNode(node->split.greater);
      if (separator == nullptr || !details::isKeySeparator(separator->split.splitByte)) {
        NOX_FAIL("Invalid state, the greater node of " << element << " is not a valid property separator.");
        return false;
      }
    }
    if (previous != nullptr) std::swap(*previous, *node);
    previous = node;
    last = element;
  }
  arrayValue->setPayload(count - 1);
  resetProperty(last);
  unsigned int arrayLink = array;
  bool erased = false;
  eraseProperty(&arrayLink, key, formatArrayKey(key, static_cast<unsigned int>(count - 1)), erased);
  return erased;
}

unsigned int DynamicObject::renameChild(unsigned int parent, const char* oldName, unsigned int oldLength,
                                        const char* newName, unsigned int newLength) {
  if (newName == nullptr || newLength == 0) {
    NOX_FAIL("No given name for the child to rename.");
    return 0;
  }
  if (!checkKey(newName, newLength) || std::memchr(newName, 0, newLength) != nullptr) {
    NOX_FAIL("The given child key, '" << textOf(newName, newLength) << "' is invalid.");
    return 0;
  }
  if (oldName == nullptr) {
    NOX_FAIL("Null string given as a key");
    return 0;
  }
  if (requireValueNode(parent) == nullptr) return 0;
  unsigned int separator;
  if (parent != root_ && findNode(parent, ".", 1, false, separator) == nullptr) {
    NOX_FAIL("The given property is not an object having children.");
    return 0;
  }
  const unsigned int oldChild = findChild(parent, oldName, oldLength);
  if (oldChild == 0) {
    NOX_FAIL("The given property has no child named '" << textOf(oldName, oldLength) << "'.");
    return 0;
  }
  const unsigned int existing = findChild(parent, newName, newLength);
  if (existing == oldChild) return existing;
  if (existing != 0) {
    NOX_FAIL("The given property already has a child named '" << textOf(newName, newLength) << "'.");
    return 0;
  }
  bool created;
  unsigned int newChild;
  unsigned int newValueHandle;
  Node* newValue = insertChildKey(parent, newName, newLength, created, newChild, newValueHandle);
  if (newValue == nullptr) {
    NOX_FAIL("Can't add to the given property a child named " << textOf(newName, newLength));
    return 0;
  }
  // The value record moves as it is: type and payload (a string's hash, a child count).
  const Node* oldValue = findValueNode(oldChild);
  *newValue = *oldValue;
  if (isContainer(oldValue->value.type)) moveSeparatorSubtree(oldChild, newChild, oldValue->value.type);

  bool erased = false;
  if (parent == root_) {
    unsigned int rootLink = root_;
    eraseProperty(&rootLink, oldName, oldLength, erased);
  } else {
    PrefixedKey key('.', oldName, oldLength);
    unsigned int parentLink = parent;
    eraseProperty(&parentLink, key.data(), key.size(), erased);
  }
  NOX_ASSERT(erased, "Can't remove from the given property its child named " << textOf(oldName, oldLength));
  return newChild;
}

void DynamicObject::moveSeparatorSubtree(unsigned int from, unsigned int to, std::uint32_t type) {
  const std::int8_t separatorByte = type == type::array ? '[' : '.';
  Node* oldTerminator = getNode(from);
  unsigned int* link = &oldTerminator->split.greater;
  Node* oldSeparator = nullptr;
  while (*link != 0) {
    Node* node = getNode(*link);
    if (node == nullptr) return;
    if (node->isValueNode()) {
      NOX_FAIL("unclean state during trie search - detected leaf node");
      return;
    }
    if (node->split.splitByte == separatorByte) {
      oldSeparator = node;
      break;
    }
    link = separatorByte < node->split.splitByte ? &node->split.less : &node->split.greater;
  }
  const bool hasSubtree = oldSeparator != nullptr && oldSeparator->split.equal != 0;
  const bool hasCount = getNode(oldTerminator->split.equal)->getPayload() > 0;
  NOX_ASSERT(hasSubtree == hasCount, "Children links and count do not match");
  if (!hasSubtree) return;

  Node* newTerminator = getNode(to);
  Node* newSeparator = findOrInsertSplitNode(&newTerminator->split.greater, separatorByte);
  if (newSeparator == nullptr || newSeparator->split.equal != 0) {
    NOX_FAIL("Code assertion on trie structure is false");
    return;
  }
  newSeparator->split.equal = oldSeparator->split.equal;
  oldSeparator->split.equal = 0;
  removeSplitNode(link);
}

void DynamicObject::removeSplitNode(unsigned int* link) {
  // The node leaves its position's binary tree; its two subtrees join in order, the
  // greater one below the greatest node of the smaller one.
  const unsigned int handle = *link;
  Node* node = getNode(handle);
  unsigned int joined = node->split.less;
  if (joined == 0) {
    joined = node->split.greater;
  } else {
    Node* greatest = getNode(joined);
    while (greatest->split.greater != 0) greatest = getNode(greatest->split.greater);
    greatest->split.greater = node->split.greater;
  }
  *link = joined;
  deallocateNode(node, handle);
}

bool DynamicObject::resize(unsigned int array, unsigned int size) {
  Node* value = requireValueNode(array);
  if (value == nullptr) return false;
  if (!isTypeCompatible(array, type::array)) {
    NOX_FAIL("Can't resize a property that is not an array.");
    return false;
  }
  const unsigned int count = countChildren(array);
  if (count == size) return true;
  if (size >= getMaximumArraySize()) return false;
  value->setPayload(size);
  // Resized to nothing, a property stops being an array.
  value->value.type = size > 0 ? type::array : type::null;
  char key[arrayKeyCapacity];
  bool inserted = true;
  for (unsigned int index = count; index < size; ++index) {
    bool created;
    unsigned int element;
    unsigned int elementValue;
    inserted =
        addProperty(array, key, formatArrayKey(key, index), created, element, elementValue) != nullptr && inserted;
  }
  for (unsigned int index = count; index-- > size;) {
    const unsigned int length = formatArrayKey(key, index);
    unsigned int element;
    findNode(array, key, length, true, element);
    resetProperty(element);
    unsigned int arrayLink = array;
    bool erased = false;
    eraseProperty(&arrayLink, key, length, erased);
  }
  return inserted;
}

void DynamicObject::resetProperty(unsigned int property) {
  if (property == 0) return;
  Node* value = requireValueNode(property);
  if (value == nullptr) return;
  NOX_ASSERT(isKnownType(value->value.type), value->value.type << "is an unknown nox::utils::type.");
  if (!isContainer(value->value.type) || value->getPayload() == 0) {
    value->setPayload(0);
    value->value.type = type::null;
    return;
  }
  // Descendants go one at a time, deepest first, and without recursion, so that no depth
  // of data exhausts a small stack: `chain` holds the containers being emptied, each a
  // child of the one below it. A child is removed once it is a leaf (a scalar or an empty
  // container): an array loses its last element, an object its first child in trie order.
  SmallStack<unsigned int> chain;
  chain.push(property);
  DynamicObjectIterator children(*this, property, 1);
  while (!chain.empty()) {
    const unsigned int container = chain.top();
    Node* containerValue = findValueNode(container);
    const std::uint64_t count = containerValue->getPayload();
    if (!isContainer(containerValue->value.type) || count == 0) {
      containerValue->setPayload(0);
      containerValue->value.type = type::null;
      chain.pop();
      continue;
    }
    const bool isArray = containerValue->value.type == type::array;
    unsigned int child = 0;
    if (isArray) {
      child = getChild(container, static_cast<unsigned int>(count - 1));
    } else {
      children.initializeTraversal(container);
      if (!children.next().end()) child = children.getProperty();
    }
    const Node* childValue = findValueNode(child);
    if (childValue != nullptr && isContainer(childValue->value.type) && childValue->getPayload() > 0) {
      chain.push(child);
      continue;
    }
    const bool removed =
        childValue != nullptr && (isArray ? resize(container, static_cast<unsigned int>(count - 1))
                                          : eraseChild(container, children.getKey(), children.getKeyLength()));
    if (!removed) {
      NOX_FAIL("Children links and count do not match");
      containerValue->setPayload(0);
    }
  }
}

// ---------------------------------------------------------------------------------------
// Copies and visits.

bool DynamicObject::put(unsigned int property, const DynamicObject& source, unsigned int sourceProperty) {
  if (&source == this) {
    // Copying a property into itself or its own subtree reads what it writes: copy from
    // a snapshot, whose handles are the same.
    const DynamicObject snapshot{Ref(*this)};
    return copySubtree(property, snapshot, sourceProperty);
  }
  return copySubtree(property, source, sourceProperty);
}

bool DynamicObject::retrieve(unsigned int property, DynamicObject& target, unsigned int targetProperty) const {
  return target.put(targetProperty, *this, property);
}

bool DynamicObject::copySubtree(unsigned int property, const DynamicObject& source, unsigned int sourceProperty) {
  // Without recursion, so that no depth of data exhausts a small stack: each pair waits
  // here until its value is copied, and a container adds one pair per child.
  struct Pending {
    unsigned int target;
    unsigned int source;
  };
  Vector<Pending> pending{{property, sourceProperty}};
  while (!pending.empty()) {
    const Pending next = pending.back();
    pending.pop_back();
    if (!copyValue(next.target, source, next.source, [&pending](unsigned int target, unsigned int child) {
          pending.push_back({target, child});
        })) {
      return false;
    }
  }
  return true;
}

template <class Defer>
bool DynamicObject::copyValue(unsigned int property, const DynamicObject& source, unsigned int sourceProperty,
                              Defer deferChild) {
  const Node* sourceValue = source.requireValueNode(sourceProperty);
  if (sourceValue == nullptr || requireValueNode(property) == nullptr) return false;
  const std::uint32_t type = sourceValue->value.type;
  switch (type) {
    case type::null:
      resetProperty(property);
      return true;
    case type::integer:
    case type::real:
    case type::boolean:
      writeScalar(property, static_cast<type::Type>(type), sourceValue->getPayload());
      return true;
    case type::string:
      if (source.stringTable_ == stringTable_) {
        writeScalar(property, type::string, sourceValue->getPayload());
      } else {
        const std::string_view text = source.getStringTable().retrieveToFirstZero(sourceValue->getPayload());
        setString(property, text.data(), static_cast<unsigned int>(text.size()));
      }
      return true;
    case type::array: {
      resetProperty(property);
      const unsigned int count = source.countChildren(sourceProperty);
      if (!resize(property, count)) return false;
      // An array without elements is still an array.
      findValueNode(property)->value.type = type::array;
      for (unsigned int index = 0; index < count; ++index) {
        deferChild(getChild(property, index), source.getChild(sourceProperty, index));
      }
      return true;
    }
    case type::object: {
      resetProperty(property);
      for (DynamicObjectIterator children(source, sourceProperty, 0); !children.next().end();) {
        const unsigned int child = addChild(property, children.getKey(), children.getKeyLength());
        if (child == 0) return false;
        deferChild(child, children.getProperty());
      }
      // An object without children is still an object.
      findValueNode(property)->value.type = type::object;
      return true;
    }
    default:
      NOX_FAIL(type << " is an unknown nox::utils::type");
      return false;
  }
}

// Drives a builder over a subtree, without recursion: one level per open container,
// each with its own walk over the container's children. Objects are walked with an
// iterator over their direct children; array elements are gathered by one such walk and
// emitted in index order, which their keys' trie order is not ("[10]" comes before
// "[2]"). Levels are kept from one container to the next, so the walk allocates per
// depth, not per container.
class DynamicObject::SubtreeWalk {
 public:
  SubtreeWalk(const DynamicObject& object, AbstractObjectBuilder& builder) : object_(object), builder_(builder) {}

  bool run(unsigned int property) {
    if (!open(property)) return false;
    while (depth_ > 0) {
      Level& level = levels_[depth_ - 1];
      unsigned int child;
      if (!findNextChild(level, child)) {
        --depth_;
        if (!(level.isArray ? builder_.endArray() : builder_.endObject())) return false;
        continue;
      }
      const bool slotOpened = level.isArray
                                  ? builder_.arrayChild()
                                  : builder_.objectChild(level.children.getKey(), level.children.getKeyLength());
      if (!slotOpened || !open(child)) return false;
    }
    return true;
  }

 private:
  struct Level {
    explicit Level(const DynamicObject& object) : children(object, 0, 0) {}
    DynamicObjectIterator children;
    Vector<unsigned int> elements;
    std::size_t nextElement = 0;
    bool isArray = false;
  };

  // Emits a scalar whole, or the start of a container, whose children come next.
  bool open(unsigned int property) {
    const Node* value = object_.requireValueNode(property);
    if (value == nullptr) return false;
    const auto type = static_cast<type::Type>(value->value.type);
    switch (type) {
      case type::null:
        return builder_.null();
      case type::integer:
        return builder_.integer(static_cast<std::int64_t>(value->getPayload()));
      case type::real:
        return builder_.real(value->getRealPayload());
      case type::string: {
        // Strings are emitted up to their first zero byte.
        const std::string_view text = object_.stringTable_->retrieveToFirstZero(value->getPayload());
        return builder_.string(text.data(), static_cast<unsigned int>(text.size()));
      }
      case type::boolean:
        return builder_.boolean(value->getPayload() == 0);
      case type::array:
        if (!builder_.beginArray()) return false;
        gatherElements(property, push(true));
        return true;
      case type::object:
        if (!builder_.beginObject()) return false;
        push(false).children.initializeTraversal(property);
        return true;
    }
    NOX_LOG_ERROR(builder_.getLogger(), error::invalidConfiguration,
                  "Error while serializing dynamic object - unexpected property type " << static_cast<int>(type));
    return false;
  }

  Level& push(bool isArray) {
    if (levels_.size() == depth_) levels_.emplace_back(object_);
    Level& level = levels_[depth_++];
    level.isArray = isArray;
    return level;
  }

  // The container's next child, if it has one left.
  static bool findNextChild(Level& level, unsigned int& child) {
    if (level.isArray) {
      if (level.nextElement == level.elements.size()) return false;
      child = level.elements[level.nextElement++];
      return true;
    }
    if (level.children.next().end()) return false;
    child = level.children.getProperty();
    return true;
  }

  // Fills `level.elements` with the handle of element i at index i (0 where there is none).
  void gatherElements(unsigned int array, Level& level) {
    level.elements.assign(object_.countChildren(array), 0);
    level.nextElement = 0;
    for (level.children.initializeTraversal(array); !level.children.next().end();) {
      const unsigned int index = parseElementIndex(level.children.getKey(), level.children.getKeyLength());
      if (index < level.elements.size()) level.elements[index] = level.children.getProperty();
    }
  }

  // The index of an element key "[n]"; ~0u for anything else.
  static unsigned int parseElementIndex(const char* key, unsigned int length) {
    unsigned int index = ~0u;
    if (length < 3 || key[0] != '[' || key[length - 1] != ']') return index;
    return parseDecimal(std::string_view(key + 1, length - 2), index) ? index : ~0u;
  }

  const DynamicObject& object_;
  AbstractObjectBuilder& builder_;
  // levels_[0, depth_) are the open containers, innermost last.
  Deque<Level> levels_;
  std::size_t depth_ = 0;
};

bool DynamicObject::visitTrie(unsigned int property, AbstractObjectBuilder& builder) const {
  return SubtreeWalk(*this, builder).run(property);
}

}  // namespace nox::utils
