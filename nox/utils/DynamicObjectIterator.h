// Walks every property below a start property of a DynamicObject, without recursion,
// yielding each property's handle and its key relative to the start. Properties come
// in signed-byte key order, each before its descendants. The object must outlive the
// iterator and stay unchanged while it walks.
//
//   for (DynamicObjectIterator it(object, start); !it.next().end();) use(it.getKey());
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/Export.h>
#include <nox/utils/details/DynamicObjectNode.h>

namespace nox::utils {

class NOX_UTILS_API DynamicObjectIterator {
 public:
  // `start` 0 means the root. The first next() moves to the first property below it.
  DynamicObjectIterator(const DynamicObject& object, unsigned int start);
  // `maxDepth` bounds how many separators deep below the start the walk goes: 0 yields
  // the direct children only.
  DynamicObjectIterator(const DynamicObject& object, unsigned int start, unsigned int maxDepth);

  // Restarts below another start property (0 = root), keeping the depth bound.
  void initializeTraversal(unsigned int start);

  DynamicObjectIterator& next();
  bool end() const { return current_ == 0; }

  unsigned int getProperty() const { return current_; }
  // The key relative to the start ("b", "b.c", "[0]"), without a leading full stop.
  const char* getKey() const { return key_.empty() ? "" : key_.data() + keyOffset(); }
  unsigned int getKeyLength() const {
    if (key_.empty()) return 0;
    const unsigned int terminated = key_.back() == 0 ? 1 : 0;
    return static_cast<unsigned int>(key_.size()) - terminated - keyOffset();
  }

  const DynamicObject& getDynamicObject() const { return object_; }

  // The current property's value, as the object's getters by handle read it (the same
  // conversions and failures), without resolving the handle again.
  type::Type getType() const { return DynamicObject::readType(currentValue()); }
  std::int64_t getInt() const { return DynamicObject::readInt(currentValue()); }
  double getReal() const { return DynamicObject::readReal(currentValue()); }
  bool getBool() const { return DynamicObject::readBool(currentValue()); }
  const char* getString() const { return object_.readString(currentValue()); }

 private:
  using Node = details::DynamicObjectNode;

  // A node whose less or equal subtree the walk is in; it resumes there on the way back.
  // Nodes left for their greater subtree are done with and not kept.
  struct Pending {
    // Built in place: a record assembled elsewhere and copied in whole stalls on the
    // store forwarding of its parts.
    Pending(const Node* node, unsigned int handle, bool inEqual) : node(node), handle(handle), inEqual(inEqual) {}
    const Node* node;
    unsigned int handle;
    bool inEqual;
  };

  // Walks down from `handle` to the next value node; ends the walk when none is left.
  void descend(unsigned int handle);
  // Climbs to the next unexplored branch of the pending nodes; 0 when none remains.
  unsigned int climb();
  // Whether the walk goes into `node`'s equal subtree; if so, extends the key.
  bool enterEqual(const Node& node);
  // Drops the key byte of the equal subtree the walk leaves; false on a broken state.
  bool leaveEqual(const Node& node);
  static const Node* nodeAt(const DynamicObject::BlockTable& nodes, unsigned int handle) {
    const Node* node = nodes.at(handle);
    if (node == nullptr) reportFailure("unable to convert current to real trie node pointer");
    return node;
  }
  // Out of line, to keep the walk's own code small.
  static void reportFailure(const char* message);
  const Node* currentValue() const { return value_ != nullptr ? value_ : DynamicObject::reportInvalidProperty(); }
  // Keys below the root start with the full stop of their first name, which is not shown.
  unsigned int keyOffset() const { return key_[0] == '.' ? 1 : 0; }

  // The path from the start to the current node, less the nodes left for their greater
  // subtree (the walk never comes back to them).
  Vector<Pending> stack_;
  // The raw relative key of the current node, NUL-terminated.
  Vector<char> key_;
  const DynamicObject& object_;
  unsigned int start_ = 0;
  unsigned int startValue_ = 0;
  bool startIsRoot_ = true;
  unsigned int current_ = 0;
  // The value node of the current property, null at the end.
  const Node* value_ = nullptr;
  unsigned int maxDepth_;
  unsigned int depth_ = 0;
};

}  // namespace nox::utils
