// A tree of named, typed properties (null, integer, real, string, boolean, array,
// object) without any per-property heap allocation.
//
// Every property is a key of one ternary search trie: its full path from the root,
// names joined by "." and array elements written as "[index]" ("a.list[12].x"; the
// root is the empty path). Trie nodes are 16-byte records carved out of blocks from a
// BlockAllocator and linked by 32-bit handles, so an object copies with a memory copy
// and blocks recycle between objects. String values are interned in a StringTable.
//
// A property is addressed by path or by its handle (the handle of its key's
// terminator node; 0 means none). Handles stay valid until their property is erased.
// Almost every operation exists in three forms: by handle, by path and length, and by
// NUL-terminated path. Each is implemented once, by handle; the path forms are inline
// wrappers that assert when the property does not exist.
//
// Key bytes compare as signed bytes: children enumerate in that order (bytes
// 0x80..0xFF before ASCII, a name before its extensions, "[10]" before "[2]").
//
// Broken contracts (invalid handles, wrong types, malformed keys) are assertion
// failures, after which the operation returns its neutral result.
#pragma once

#include <nox/utils/BlockAllocator.h>
#include <nox/utils/Containers.h>
#include <nox/utils/DynamicValue.h>
#include <nox/utils/Export.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/Type.h>
#include <nox/utils/details/DynamicObjectNode.h>
#include <nox/utils/details/TextLength.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace nox::utils {

class AbstractObjectBuilder;
class DynamicObjectIterator;
class TypeManager;
class Uuid;

class NOX_UTILS_API DynamicObject {
  // The helpers of the inline path forms below.
  template <class Index>
  using IfIndex = std::enable_if_t<std::is_integral_v<Index>>;

  static unsigned int textLength(const char* text) { return details::textLength(text); }

  // Runs `operation` on the property at `path`. A missing property was reported by the
  // lookup; the operation's neutral (value-initialised) result then stands for it.
  template <class Operation>
  auto atPath(const char* path, unsigned int length, Operation operation) const -> decltype(operation(0u)) {
    const unsigned int property = getPropertyAsserts(path, length);
    if (property != 0) return operation(property);
    return decltype(operation(0u))();
  }

 public:
  using NodeAllocator = BlockAllocator<details::DynamicObjectNode>;

  // Names an object whose block allocator and string table a new object should share.
  class Ref {
   public:
    explicit Ref(const DynamicObject& object) : object_(&object) {}
    const DynamicObject& get() const { return *object_; }

   private:
    const DynamicObject* object_;
  };

  // Owns a fresh allocator (128 nodes per block) and string table (seed 100).
  DynamicObject();
  // Shares `allocator` and `strings`, which must outlive the object.
  DynamicObject(NodeAllocator& allocator, StringTable& strings);
  // Owns an allocator of the same block size and a copy of the source's string table.
  DynamicObject(const DynamicObject& other);
  // Shares the referenced object's allocator and string table and copies its tree.
  explicit DynamicObject(const Ref& other);
  DynamicObject& operator=(const DynamicObject& other);
  ~DynamicObject();

  // ---- Keys.

  static unsigned int getMaximumArraySize() { return 100000; }
  // Writes "[index]" (no terminating zero) and returns its length; `buffer` needs 13
  // bytes. Indices from getMaximumArraySize() on are an assertion failure (still
  // formatted).
  static unsigned int formatArrayKey(char* buffer, unsigned int index);
  // Whether `key` is a valid child name: non-empty and free of '.', '[' and ']'.
  static bool checkKey(const char* key, unsigned int length);

  // ---- Lookup. A missing property is 0, without assertion.

  unsigned int getRoot() const { return root_; }
  unsigned int getProperty(const char* path, unsigned int length) const;
  unsigned int getProperty(const char* path) const { return getProperty(path, textLength(path)); }
  // As getProperty, but a missing property is an assertion failure.
  unsigned int getPropertyAsserts(const char* path, unsigned int length) const;
  unsigned int getPropertyAsserts(const char* path) const { return getPropertyAsserts(path, textLength(path)); }
  bool hasProperty(const char* path, unsigned int length) const { return getProperty(path, length) != 0; }
  bool hasProperty(const char* path) const { return getProperty(path) != 0; }

  // Every operation below is implemented once, on a handle. Its path forms resolve the
  // path with getPropertyAsserts and, when the property is missing (already reported),
  // answer the operation's neutral result: 0, false, null, or nothing.

  // ---- Types.

  // The getters by handle are inline: walks over an object read every property through
  // them, and their common case is one node visit.
  type::Type getType(unsigned int property) const { return readType(requireValueNode(property)); }
  type::Type getType(const char* path, unsigned int length) const {
    return atPath(path, length, [this](unsigned int property) { return getType(property); });
  }
  type::Type getType(const char* path) const { return getType(path, textLength(path)); }
  // Null (and a missing property, even by path) is compatible with everything; integer
  // and real with each other; every other type only with itself.
  bool isTypeCompatible(unsigned int property, type::Type requested) const;
  bool isTypeCompatible(const char* path, unsigned int length, type::Type requested) const {
    return isTypeCompatible(getProperty(path, length), requested);
  }
  bool isTypeCompatible(const char* path, type::Type requested) const {
    return isTypeCompatible(getProperty(path), requested);
  }
  // Compatibility with a registered run-time type, through the value kind it stands for.
  bool isTypeCompatible(unsigned int property, const Uuid& typeId, const TypeManager& types) const;
  bool isTypeCompatible(const char* path, unsigned int length, const Uuid& typeId, const TypeManager& types) const {
    return isTypeCompatible(getProperty(path, length), typeId, types);
  }
  bool isTypeCompatible(const char* path, const Uuid& typeId, const TypeManager& types) const {
    return isTypeCompatible(getProperty(path), typeId, types);
  }

  // ---- Values. Getters convert between integer and real only; setters retype the
  // property, dropping the descendants of an array or object first.

  std::int64_t getInt(unsigned int property) const { return readInt(requireValueNode(property)); }
  std::int64_t getInt(const char* path, unsigned int length) const {
    return atPath(path, length, [this](unsigned int property) { return getInt(property); });
  }
  std::int64_t getInt(const char* path) const { return getInt(path, textLength(path)); }
  double getReal(unsigned int property) const { return readReal(requireValueNode(property)); }
  double getReal(const char* path, unsigned int length) const {
    return atPath(path, length, [this](unsigned int property) { return getReal(property); });
  }
  double getReal(const char* path) const { return getReal(path, textLength(path)); }
  bool getBool(unsigned int property) const { return readBool(requireValueNode(property)); }
  bool getBool(const char* path, unsigned int length) const {
    return atPath(path, length, [this](unsigned int property) { return getBool(property); });
  }
  bool getBool(const char* path) const { return getBool(path, textLength(path)); }
  // The hash of a string value in getStringTable().
  std::uint64_t getStringHash(unsigned int property) const;
  std::uint64_t getStringHash(const char* path, unsigned int length) const {
    return atPath(path, length, [this](unsigned int property) { return getStringHash(property); });
  }
  std::uint64_t getStringHash(const char* path) const { return getStringHash(path, textLength(path)); }
  const char* getString(unsigned int property) const { return readString(requireValueNode(property)); }
  const char* getString(const char* path, unsigned int length) const {
    return atPath(path, length, [this](unsigned int property) { return getString(property); });
  }
  const char* getString(const char* path) const { return getString(path, textLength(path)); }
  // Copies a scalar property into `out` (arrays and objects are assertion failures).
  void retrieveValue(unsigned int property, DynamicValue& out) const;
  void retrieveValue(const char* path, unsigned int length, DynamicValue& out) const {
    atPath(path, length, [&](unsigned int property) { retrieveValue(property, out); });
  }
  void retrieveValue(const char* path, DynamicValue& out) const { retrieveValue(path, textLength(path), out); }

  void setInt(unsigned int property, std::int64_t value);
  void setInt(const char* path, unsigned int length, std::int64_t value) {
    atPath(path, length, [&](unsigned int property) { setInt(property, value); });
  }
  void setInt(const char* path, std::int64_t value) { setInt(path, textLength(path), value); }
  void setReal(unsigned int property, double value);
  void setReal(const char* path, unsigned int length, double value) {
    atPath(path, length, [&](unsigned int property) { setReal(property, value); });
  }
  void setReal(const char* path, double value) { setReal(path, textLength(path), value); }
  void setBool(unsigned int property, bool value);
  void setBool(const char* path, unsigned int length, bool value) {
    atPath(path, length, [&](unsigned int property) { setBool(property, value); });
  }
  void setBool(const char* path, bool value) { setBool(path, textLength(path), value); }
  // The text is interned in the string table; a hash collision stores hash 0.
  void setString(unsigned int property, const char* text, unsigned int textLength);
  void setString(unsigned int property, const char* text) { setString(property, text, textLength(text)); }
  void setString(const char* path, unsigned int length, const char* text, unsigned int textLength) {
    atPath(path, length, [&](unsigned int property) { setString(property, text, textLength); });
  }
  void setString(const char* path, const char* text) { setString(path, textLength(path), text, textLength(text)); }
  void setValue(unsigned int property, const DynamicValue& value);
  void setValue(const char* path, unsigned int length, const DynamicValue& value) {
    atPath(path, length, [&](unsigned int property) { setValue(property, value); });
  }
  void setValue(const char* path, const DynamicValue& value) { setValue(path, textLength(path), value); }

  // ---- Children.

  // The stored number of children of an array or object; 0 for scalars.
  unsigned int countChildren(unsigned int property) const;
  unsigned int countChildren(const char* path, unsigned int length) const {
    return atPath(path, length, [this](unsigned int property) { return countChildren(property); });
  }
  unsigned int countChildren(const char* path) const { return countChildren(path, textLength(path)); }

  // Adds (or finds) the named child; a null parent becomes an object. Returns the
  // child's handle, 0 when nothing was added.
  unsigned int addChild(unsigned int parent, const char* name, unsigned int nameLength);
  unsigned int addChild(unsigned int parent, const char* name) { return addChild(parent, name, textLength(name)); }
  unsigned int addChild(const char* parentPath, unsigned int parentLength, const char* name, unsigned int nameLength) {
    return atPath(parentPath, parentLength, [&](unsigned int parent) { return addChild(parent, name, nameLength); });
  }
  unsigned int addChild(const char* parentPath, const char* name) {
    return addChild(parentPath, textLength(parentPath), name, textLength(name));
  }

  // For an array, the element `index`; for an object, the index-th key that continues
  // the object's path in trie order. 0 when out of range.
  unsigned int getChild(unsigned int parent, unsigned int index) const;
  unsigned int getChild(const char* parentPath, unsigned int parentLength, unsigned int index) const {
    return atPath(parentPath, parentLength, [&](unsigned int parent) { return getChild(parent, index); });
  }
  unsigned int getChild(const char* parentPath, unsigned int index) const {
    return getChild(parentPath, textLength(parentPath), index);
  }
  // Any integer index, so that a literal 0 does not read as a null name.
  template <class Index, class = IfIndex<Index>>
  unsigned int getChild(unsigned int parent, Index index) const {
    return getChild(parent, static_cast<unsigned int>(index));
  }
  template <class Index, class = IfIndex<Index>>
  unsigned int getChild(const char* parentPath, Index index) const {
    return getChild(parentPath, static_cast<unsigned int>(index));
  }
  unsigned int getChild(unsigned int parent, const char* name, unsigned int nameLength) const;
  unsigned int getChild(unsigned int parent, const char* name) const {
    return getChild(parent, name, textLength(name));
  }
  unsigned int getChild(const char* parentPath, unsigned int parentLength, const char* name,
                        unsigned int nameLength) const {
    return atPath(parentPath, parentLength, [&](unsigned int parent) { return getChild(parent, name, nameLength); });
  }
  unsigned int getChild(const char* parentPath, const char* name) const {
    return getChild(parentPath, textLength(parentPath), name, textLength(name));
  }

  // A question, not a requirement: a missing parent, even by path, has no children.
  bool hasChild(unsigned int parent, const char* name, unsigned int nameLength) const;
  bool hasChild(unsigned int parent, const char* name) const { return hasChild(parent, name, textLength(name)); }
  bool hasChild(const char* parentPath, unsigned int parentLength, const char* name, unsigned int nameLength) const {
    const unsigned int parent = getProperty(parentPath, parentLength);
    return parent != 0 && hasChild(parent, name, nameLength);
  }
  bool hasChild(const char* parentPath, const char* name) const {
    return hasChild(parentPath, textLength(parentPath), name, textLength(name));
  }

  // Removes the named child and its descendants; false (silently) when there is no such
  // child. An object whose last child goes becomes null.
  bool eraseChild(unsigned int parent, const char* name, unsigned int nameLength);
  bool eraseChild(unsigned int parent, const char* name) { return eraseChild(parent, name, textLength(name)); }
  bool eraseChild(const char* parentPath, unsigned int parentLength, const char* name, unsigned int nameLength) {
    return atPath(parentPath, parentLength, [&](unsigned int parent) { return eraseChild(parent, name, nameLength); });
  }
  bool eraseChild(const char* parentPath, const char* name) {
    return eraseChild(parentPath, textLength(parentPath), name, textLength(name));
  }
  // Removes an array element; the later elements move down by one index. An index out
  // of range changes nothing and answers true.
  bool eraseChild(unsigned int array, unsigned int index);
  bool eraseChild(const char* arrayPath, unsigned int arrayLength, unsigned int index) {
    return atPath(arrayPath, arrayLength, [&](unsigned int array) { return eraseChild(array, index); });
  }
  bool eraseChild(const char* arrayPath, unsigned int index) {
    return eraseChild(arrayPath, textLength(arrayPath), index);
  }
  template <class Index, class = IfIndex<Index>>
  bool eraseChild(unsigned int array, Index index) {
    return eraseChild(array, static_cast<unsigned int>(index));
  }
  template <class Index, class = IfIndex<Index>>
  bool eraseChild(const char* arrayPath, Index index) {
    return eraseChild(arrayPath, static_cast<unsigned int>(index));
  }

  // Moves a child, with its value and subtree, to a new name; returns its new handle.
  unsigned int renameChild(unsigned int parent, const char* oldName, unsigned int oldLength, const char* newName,
                           unsigned int newLength);
  unsigned int renameChild(unsigned int parent, const char* oldName, const char* newName) {
    return renameChild(parent, oldName, textLength(oldName), newName, textLength(newName));
  }
  unsigned int renameChild(const char* parentPath, unsigned int parentLength, const char* oldName,
                           unsigned int oldLength, const char* newName, unsigned int newLength) {
    return atPath(parentPath, parentLength,
                  [&](unsigned int parent) { return renameChild(parent, oldName, oldLength, newName, newLength); });
  }
  unsigned int renameChild(const char* parentPath, const char* oldName, const char* newName) {
    return renameChild(parentPath, textLength(parentPath), oldName, textLength(oldName), newName, textLength(newName));
  }

  // Makes a null or array property an array of `size` elements (new ones null). Size 0
  // makes it null; sizes from getMaximumArraySize() on answer false.
  bool resize(unsigned int array, unsigned int size);
  bool resize(const char* arrayPath, unsigned int arrayLength, unsigned int size) {
    return atPath(arrayPath, arrayLength, [&](unsigned int array) { return resize(array, size); });
  }
  bool resize(const char* arrayPath, unsigned int size) { return resize(arrayPath, textLength(arrayPath), size); }

  // Makes the property null and removes all its descendants. Handle 0 does nothing.
  void resetProperty(unsigned int property);
  void resetProperty(const char* path, unsigned int length) { resetProperty(getPropertyAsserts(path, length)); }
  void resetProperty(const char* path) { resetProperty(path, textLength(path)); }

  // Erases the single key `key` below `start` (no descendants); whether a value went.
  bool eraseProperty(unsigned int start, const char* key, unsigned int length);

  // ---- Copies between objects. Strings are re-interned in the receiving table.

  // Makes `property` a copy of `source`'s property `sourceProperty` (its root when
  // omitted), subtree included.
  bool put(unsigned int property, const DynamicObject& source, unsigned int sourceProperty);
  bool put(unsigned int property, const DynamicObject& source) { return put(property, source, source.getRoot()); }
  bool put(unsigned int property, const DynamicObject& source, const char* sourcePath, unsigned int sourceLength) {
    return source.atPath(sourcePath, sourceLength,
                         [&](unsigned int sourceProperty) { return put(property, source, sourceProperty); });
  }
  bool put(unsigned int property, const DynamicObject& source, const char* sourcePath) {
    return put(property, source, sourcePath, textLength(sourcePath));
  }
  bool put(const char* path, unsigned int length, const DynamicObject& source) {
    return atPath(path, length, [&](unsigned int property) { return put(property, source); });
  }
  bool put(const char* path, const DynamicObject& source) { return put(path, textLength(path), source); }
  // Makes `target`'s property `targetProperty` (its root when omitted) a copy of
  // `property`, subtree included.
  bool retrieve(unsigned int property, DynamicObject& target, unsigned int targetProperty) const;
  bool retrieve(unsigned int property, DynamicObject& target) const {
    return retrieve(property, target, target.getRoot());
  }
  bool retrieve(const char* path, unsigned int length, DynamicObject& target) const {
    return atPath(path, length, [&](unsigned int property) { return retrieve(property, target); });
  }
  bool retrieve(const char* path, DynamicObject& target) const { return retrieve(path, textLength(path), target); }

  // Emits `property`'s value as build events: scalars as one event, objects and arrays
  // as begin, (child, value)*, end. No begin()/end() around it.
  bool visitTrie(unsigned int property, AbstractObjectBuilder& builder) const;

  // ---- Whole object.

  // True when the root is null, as it is again once its last child is erased.
  bool empty() const;
  // Gives every block back and starts again with a null root.
  void clear();

  StringTable& getStringTable() const { return *stringTable_; }
  NodeAllocator& getBlockAllocator() const { return *blockAllocator_; }
  // Whether this object made its allocator and string table and destroys them.
  bool isOwningStringTable() const { return owning_; }

  // Nodes currently holding trie data: carved nodes minus the free list. A new object
  // uses 3. A copy also counts the nodes that were free in its source.
  unsigned int countUsedNodes() const;
  // Read-only view of a raw trie node (null for handle 0), for diagnostics.
  const details::DynamicObjectNode* inspectNode(unsigned int handle) const { return getNode(handle); }

 private:
  friend class DynamicObjectIterator;
  using Node = details::DynamicObjectNode;
  class SubtreeWalk;

  void initializeBlockGeometry();
  unsigned int countFreeNodes() const;

  // The block table as it stands, for resolving handles. Walks that store key bytes
  // keep a copy in locals: a store through a char may alias any member, which would
  // make the compiler reload the table on every step.
  struct BlockTable {
    Node* const* blocks;
    std::size_t count;
    unsigned int shift;  // log2 of size when size is a power of two, else 32
    unsigned int size;

    Node* at(unsigned int handle) const {
      if (handle == 0) return nullptr;
      const unsigned int index = handle - 1;
      const std::size_t block = shift < 32 ? index >> shift : index / size;
      const std::size_t offset = shift < 32 ? index & (size - 1) : index % size;
      if (block >= count) return reportBlockIndexOutOfRange();
      return blocks[block] + offset;
    }
  };
  BlockTable getBlockTable() const { return {blocks_.data(), blocks_.size(), blockShift_, blockSize_}; }
  Node* getNode(unsigned int handle) const { return getBlockTable().at(handle); }
  static Node* reportBlockIndexOutOfRange();

  // Resolves the handles met by one walk. Neighbouring trie nodes mostly share a block,
  // so the block of the previous node is tried first: a well-predicted comparison then
  // replaces a load of the block table on the walk's chain of dependent loads.
  class NodeCursor {
   public:
    explicit NodeCursor(const DynamicObject& object)
        : object_(object), shift_(object.blockShift_), mask_(object.blockSize_ - 1) {}
    Node* at(unsigned int handle) {
      const unsigned int index = handle - 1;
      if (handle != 0 && shift_ < 32 && (index >> shift_) == block_) return base_ + (index & mask_);
      return fetch(handle);
    }

   private:
    Node* fetch(unsigned int handle) {
      Node* node = object_.getNode(handle);
      if (node != nullptr && shift_ < 32) {
        block_ = (handle - 1) >> shift_;
        base_ = node - ((handle - 1) & mask_);
      }
      return node;
    }

    const DynamicObject& object_;
    unsigned int shift_;
    unsigned int mask_;
    unsigned int block_ = ~0u;
    Node* base_ = nullptr;
  };

  Node* allocateNode(char splitByte, unsigned int& handle);
  Node* allocateValueNode(unsigned int& handle);
  void deallocateNode(Node* node, unsigned int handle);

  Node* findNode(unsigned int start, const char* key, unsigned int length, bool toTerminator,
                 unsigned int& handle) const;
  Node* findValueNode(Node* terminator, unsigned int& handle) const {
    if (terminator != nullptr && terminator->split.splitByte == 0) {
      Node* value = getNode(terminator->split.equal);
      if (value != nullptr && value->isValueNode()) {
        handle = terminator->split.equal;
        return value;
      }
    }
    handle = 0;
    return nullptr;
  }
  Node* findValueNode(unsigned int handle) const {
    unsigned int ignored;
    return findValueNode(getNode(handle), ignored);
  }
  Node* findValueNode(unsigned int start, const char* key, unsigned int length, unsigned int& terminator,
                      unsigned int& valueHandle) const;
  // The value node of a valid property; "Invalid property" and null otherwise.
  Node* requireValueNode(unsigned int property) const {
    Node* value = findValueNode(property);
    return value != nullptr ? value : reportInvalidProperty();
  }
  static Node* reportInvalidProperty();
  // The getters on a value node (null when the property was invalid, already reported):
  // the common case inline, conversions and failures out of line.
  static type::Type readType(const Node* value) {
    return value != nullptr ? static_cast<type::Type>(value->value.type) : type::null;
  }
  static std::int64_t readInt(const Node* value) {
    if (value != nullptr && value->value.type == type::integer) return static_cast<std::int64_t>(value->getPayload());
    return convertToInt(value);
  }
  static double readReal(const Node* value) {
    if (value != nullptr && value->value.type == type::real) return value->getRealPayload();
    return convertToReal(value);
  }
  static bool readBool(const Node* value) {
    // Booleans are stored inverted: a zeroed payload reads as true.
    if (value != nullptr && value->value.type == type::boolean) return value->getPayload() == 0;
    return reportNotBool(value);
  }
  const char* readString(const Node* value) const {
    // A string property always reads as a text: the empty text under seed 0 hashes to 0,
    // which the table keeps no entry for.
    if (value != nullptr && value->value.type == type::string) return stringTable_->retrieve(value->getPayload(), "");
    return reportNotString(value);
  }
  static std::int64_t convertToInt(const Node* value);
  static double convertToReal(const Node* value);
  static const char* reportNotString(const Node* value);
  static bool reportNotBool(const Node* value);

  Node* addProperty(unsigned int start, const char* key, unsigned int length, bool& created, unsigned int& terminator,
                    unsigned int& valueHandle);
  // Insertion from the link that holds the first node to compare with.
  Node* addPropertyAt(unsigned int* link, const char* key, unsigned int length, bool& created, unsigned int& terminator,
                      unsigned int& valueHandle);
  Node* findOrInsertTerminator(unsigned int* link, unsigned int& handle);
  // Releases, bottom-up, the nodes of a path of links that lead nowhere.
  template <class Links>
  void releaseLinklessNodes(Links& path);
  Node* findOrInsertSplitNode(unsigned int* link, char byte);
  void removeSplitNode(unsigned int* link);
  bool eraseProperty(unsigned int* link, const char* key, unsigned int length, bool& erased);
  void addRootProperty();

  void doClear();
  void doMemoryCopy(const DynamicObject& source);

  // Drops the descendants of an array or object before it takes a scalar.
  Node* prepareScalarWrite(unsigned int property);
  void writeScalar(unsigned int property, type::Type type, std::uint64_t payload);
  Node* insertChildKey(unsigned int parent, const char* name, unsigned int length, bool& created, unsigned int& child,
                       unsigned int& valueHandle);
  unsigned int findChild(unsigned int parent, const char* name, unsigned int nameLength) const;
  unsigned int findObjectChildByIndex(unsigned int parent, unsigned int index) const;
  bool eraseNamedChild(unsigned int parent, const char* key, unsigned int length);
  void moveSeparatorSubtree(unsigned int from, unsigned int to, std::uint32_t type);
  bool copySubtree(unsigned int property, const DynamicObject& source, unsigned int sourceProperty);
  // Copies the value of one property; each child of a container is handed to
  // `deferChild(targetChild, sourceChild)` to be copied in turn.
  template <class Defer>
  bool copyValue(unsigned int property, const DynamicObject& source, unsigned int sourceProperty, Defer deferChild);

  NodeAllocator* blockAllocator_;
  StringTable* stringTable_;
  bool owning_;
  Vector<Node*> blocks_;
  unsigned int root_ = 0;
  unsigned int usedInLastBlock_ = 0;
  unsigned int freeListHead_ = 0;
  // Cached from the allocator, since every node access needs them: log2 of the block
  // size when it is a power of two (lookups then shift instead of divide), else 32.
  unsigned int blockSize_ = 0;
  unsigned int blockShift_ = 32;
};

}  // namespace nox::utils
