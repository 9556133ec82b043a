#include <nox/utils/DynamicObjectIterator.h>

#include <nox/utils/Assertion.h>
#include <nox/utils/DynamicObject.h>

namespace nox::utils {

namespace {

constexpr unsigned int unbounded = ~0u;

}  // namespace

DynamicObjectIterator::DynamicObjectIterator(const DynamicObject& object, unsigned int start)
    : DynamicObjectIterator(object, start, unbounded) {}

DynamicObjectIterator::DynamicObjectIterator(const DynamicObject& object, unsigned int start, unsigned int maxDepth)
    : object_(object), maxDepth_(maxDepth) {
  initializeTraversal(start);
}

void DynamicObjectIterator::initializeTraversal(unsigned int start) {
  stack_.clear();
  key_.clear();
  depth_ = 0;
  object_.findValueNode(start != 0 ? start : object_.getRoot(), "", 0, start_, startValue_);
  startIsRoot_ = start_ == object_.getRoot();
  current_ = start_;
  value_ = object_.getNode(startValue_);
}

DynamicObjectIterator& DynamicObjectIterator::next() {
  if (current_ == 0) {
    reportFailure("unable to increment from invalid current node");
    return *this;
  }
  // Nothing is pending only before the first step: a yielded property's terminator
  // stays pending until the walk leaves its value.
  const unsigned int handle = stack_.empty() ? start_ : climb();
  if (handle == 0) {
    current_ = 0;
    value_ = nullptr;
    return *this;
  }
  descend(handle);
  return *this;
}

void DynamicObjectIterator::descend(unsigned int handle) {
  const DynamicObject::BlockTable nodes = object_.getBlockTable();
  while (true) {
    const Node* node = nodeAt(nodes, handle);
    if (node == nullptr) break;
    if (node->isValueNode()) {
      // A value is entered from its terminator, pending on top.
      if (stack_.empty() || !stack_.back().inEqual) {
        reportFailure("unexpected state in iteration stack - one of the children of current should be the top element");
        break;
      }
      current_ = stack_.back().handle;
      value_ = node;
      return;
    }
    if (node->split.less != 0) {
      stack_.emplace_back(node, handle, false);
      handle = node->split.less;
    } else if (enterEqual(*node)) {
      stack_.emplace_back(node, handle, true);
      handle = node->split.equal;
    } else if (node->split.greater != 0) {
      handle = node->split.greater;
    } else if ((handle = climb()) == 0) {
      break;
    }
  }
  current_ = 0;
  value_ = nullptr;
}

unsigned int DynamicObjectIterator::climb() {
  while (!stack_.empty()) {
    const Pending pending = stack_.back();
    stack_.pop_back();
    const Node& node = *pending.node;
    if (pending.inEqual) {
      if (!leaveEqual(node)) return 0;
    } else if (enterEqual(node)) {
      stack_.emplace_back(pending.node, pending.handle, true);
      return node.split.equal;
    }
    if (node.split.greater != 0) return node.split.greater;
  }
  return 0;
}

inline bool DynamicObjectIterator::enterEqual(const Node& node) {
  if (node.split.equal == 0 || node.split.equal == startValue_) return false;
  const std::int8_t byte = node.split.splitByte;
  // Right below a property other than the root, the trie also holds the keys of
  // siblings whose names extend the start's name ("ab" beside "a"): only the
  // separators lead to the start's own descendants.
  if (key_.empty() && !startIsRoot_ && !details::isKeySeparator(byte)) return false;
  if (details::isKeySeparator(byte) && !key_.empty()) {
    if (depth_ >= maxDepth_) return false;
    ++depth_;
  }
  key_.push_back(static_cast<char>(byte));
  return true;
}

inline bool DynamicObjectIterator::leaveEqual(const Node& node) {
  if (key_.empty()) {
    reportFailure("unable to remove one character from key although we are in an equal match case");
    return false;
  }
  key_.pop_back();
  if (details::isKeySeparator(node.split.splitByte) && !key_.empty()) --depth_;
  return true;
}

void DynamicObjectIterator::reportFailure(const char* message) { NOX_FAIL(message); }

}  // namespace nox::utils
