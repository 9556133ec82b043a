// Random operations on a DynamicObject, mirrored on a plain tree; the two must agree
// after every batch, and erasing everything must give back every node.
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/StringTable.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/AssertionRecorder.h"

using nox::utils::DynamicObject;
using nox::utils::DynamicObjectIterator;
using nox::utils::StringTable;
namespace type = nox::utils::type;

namespace {

// Children enumerate in the order of their names compared as signed bytes, each name
// ending in a zero byte: "a\xC3\xA9" < "a" < "a-" < "ab".
struct SignedLess {
  bool operator()(const std::string& left, const std::string& right) const {
    for (std::size_t i = 0;; ++i) {
      const auto a = static_cast<signed char>(i < left.size() ? left[i] : 0);
      const auto b = static_cast<signed char>(i < right.size() ? right[i] : 0);
      if (a != b) return a < b;
      if (a == 0) return false;
    }
  }
};

struct Model {
  type::Type type = type::null;
  std::int64_t integer = 0;
  double real = 0.0;
  bool boolean = false;
  std::string text;
  std::map<std::string, Model, SignedLess> children;
  std::vector<Model> elements;
};

std::string realText(double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.17g", value);
  return buffer;
}

std::string dump(const Model& model) {
  switch (model.type) {
    case type::integer:
      return std::to_string(model.integer);
    case type::real:
      return "r" + realText(model.real);
    case type::boolean:
      return model.boolean ? "true" : "false";
    case type::string:
      return "\"" + model.text + "\"";
    case type::array: {
      std::string text = "[";
      for (const Model& element : model.elements) text += dump(element) + ",";
      return text + "]";
    }
    case type::object: {
      std::string text = "{";
      for (const auto& [name, child] : model.children) text += name + ":" + dump(child) + ",";
      return text + "}";
    }
    default:
      return "null";
  }
}

// The same text from the object's accessors, checking each container's stored count.
std::string dump(const DynamicObject& object, unsigned int property) {
  switch (object.getType(property)) {
    case type::integer:
      return std::to_string(object.getInt(property));
    case type::real:
      return "r" + realText(object.getReal(property));
    case type::boolean:
      return object.getBool(property) ? "true" : "false";
    case type::string:
      return "\"" + std::string(object.getString(property)) + "\"";
    case type::array: {
      std::string text = "[";
      const unsigned int count = object.countChildren(property);
      for (unsigned int i = 0; i < count; ++i) text += dump(object, object.getChild(property, i)) + ",";
      EXPECT_EQ(object.getChild(property, count), 0u) << "an element beyond the stored count";
      return text + "]";
    }
    case type::object: {
      std::string text = "{";
      unsigned int count = 0;
      for (DynamicObjectIterator it(object, property, 0); !it.next().end(); ++count) {
        text += std::string(it.getKey(), it.getKeyLength()) + ":" + dump(object, it.getProperty()) + ",";
      }
      EXPECT_EQ(object.countChildren(property), count) << "stored child count";
      return text + "}";
    }
    default:
      return "null";
  }
}

// Nodes reachable from the entry node 1, each counted once; a node reachable twice
// counts as a failure. The object holds no other node exactly when this equals
// countUsedNodes().
unsigned int countReachableNodes(const DynamicObject& object) {
  std::set<unsigned int> seen;
  std::vector<unsigned int> pending{1};
  while (!pending.empty()) {
    const unsigned int handle = pending.back();
    pending.pop_back();
    if (handle == 0) continue;
    EXPECT_TRUE(seen.insert(handle).second) << "node " << handle << " is linked twice";
    const auto* node = object.inspectNode(handle);
    if (node->isValueNode()) continue;
    EXPECT_TRUE(node->split.less != 0 || node->split.equal != 0 || node->split.greater != 0)
        << "node " << handle << " leads nowhere";
    pending.insert(pending.end(), {node->split.less, node->split.equal, node->split.greater});
  }
  return static_cast<unsigned int>(seen.size());
}

struct Place {
  std::string path;
  Model* model;
};

void collect(Model& model, const std::string& path, std::vector<Place>& places) {
  places.push_back({path, &model});
  if (model.type == type::object) {
    for (auto& [name, child] : model.children) collect(child, path.empty() ? name : path + "." + name, places);
  } else if (model.type == type::array) {
    for (std::size_t i = 0; i < model.elements.size(); ++i) {
      collect(model.elements[i], path + "[" + std::to_string(i) + "]", places);
    }
  }
}

// Names that share prefixes, extend each other with bytes on both sides of "." and
// "[", and use bytes beyond ASCII.
const char* const names[] = {"a", "ab", "a-", "a~", "b", "\xC3\xA9", "a\xC3\xA9", "x", "xy", "0", "a b", "\xFF"};
const char* const texts[] = {"", "s", "text", "\xC3\xA9t\xC3\xA9"};

class RandomSession {
 public:
  RandomSession(DynamicObject& object, unsigned int seed) : object_(object), random_(seed) {}

  void run(int operations, int batch) {
    for (int i = 1; i <= operations; ++i) {
      step();
      if (i % batch == 0) verify();
      if (::testing::Test::HasFailure()) {
        std::cout << "failed by operation " << i << " (kind " << lastOperation_ << ")" << std::endl;
        return;
      }
    }
  }

  void verify() {
    ASSERT_EQ(dump(object_, object_.getRoot()), dump(model_));
    ASSERT_EQ(countReachableNodes(object_), object_.countUsedNodes());
    std::vector<Place> places;
    collect(model_, "", places);
    for (const Place& place : places) {
      const unsigned int property = object_.getProperty(place.path.c_str());
      ASSERT_NE(property, 0u) << place.path;
      ASSERT_EQ(object_.getType(property), place.model->type) << place.path;
    }
  }

  // Erases everything from the top; all nodes but the root's must come back.
  void eraseEverything() {
    const unsigned int root = object_.getRoot();
    while (model_.type == type::object) {
      auto child = model_.children.begin();
      std::advance(child, pick(model_.children.size()));
      ASSERT_TRUE(object_.eraseChild(root, child->first.c_str()));
      model_.children.erase(child);
      if (model_.children.empty()) model_ = Model();
    }
    while (model_.type == type::array && !model_.elements.empty()) {
      const unsigned int index = pick(model_.elements.size());
      ASSERT_TRUE(object_.eraseChild(root, index));
      model_.elements.erase(model_.elements.begin() + index);
    }
    object_.resetProperty(root);
    model_ = Model();
    verify();
    EXPECT_EQ(object_.countUsedNodes(), 3u);
  }

 private:
  unsigned int pick(std::size_t count) {
    return static_cast<unsigned int>(std::uniform_int_distribution<std::size_t>(0, count - 1)(random_));
  }
  const char* pickName() { return names[pick(std::size(names))]; }

  // A random property whose type passes `accept`, or null.
  template <class Accept>
  Place* pickPlace(std::vector<Place>& places, Accept accept) {
    std::vector<Place*> candidates;
    for (Place& place : places) {
      if (accept(*place.model)) candidates.push_back(&place);
    }
    return candidates.empty() ? nullptr : candidates[pick(candidates.size())];
  }

  unsigned int handleOf(const Place& place) { return object_.getProperty(place.path.c_str()); }

  void step() {
    std::vector<Place> places;
    collect(model_, "", places);
    const bool crowded = places.size() > 150;
    auto objectOrNull = [](const Model& m) { return m.type == type::object || m.type == type::null; };
    auto object = [](const Model& m) { return m.type == type::object; };
    auto arrayOrNull = [](const Model& m) { return m.type == type::array || m.type == type::null; };

    lastOperation_ = pick(crowded ? 12 : 16);
    switch (lastOperation_) {
      case 0:
      case 1:
        if (Place* place = pickPlace(places, object)) eraseByName(*place);
        break;
      case 2:
        if (Place* place = pickPlace(places, arrayOrNull)) eraseByIndex(*place);
        break;
      case 3:
        resetProperty(places[pick(places.size())]);
        break;
      case 4:
        if (Place* place = pickPlace(places, object)) rename(*place);
        break;
      case 5:
        setScalar(places[pick(places.size())]);
        break;
      case 6:
        putFromSelf(places[pick(places.size())], places[pick(places.size())]);
        break;
      case 7:
        putFromAnotherObject(places[pick(places.size())], places[pick(places.size())]);
        break;
      case 8:
        checkRetrieve(places[pick(places.size())]);
        break;
      case 9:
        checkCopies();
        break;
      case 10:
      case 11:
        if (Place* place = pickPlace(places, arrayOrNull)) resize(*place);
        break;
      default:
        if (Place* place = pickPlace(places, objectOrNull)) addChild(*place);
        break;
    }
  }

  void addChild(Place& place) {
    const char* name = pickName();
    ASSERT_NE(object_.addChild(handleOf(place), name), 0u) << place.path << " + " << name;
    place.model->type = type::object;
    place.model->children[name];
  }

  void setScalar(Place& place) {
    const unsigned int property = handleOf(place);
    Model value;
    switch (pick(4)) {
      case 0:
        value.type = type::integer;
        value.integer = static_cast<std::int64_t>(random_()) - (std::int64_t{1} << 31);
        object_.setInt(property, value.integer);
        break;
      case 1:
        value.type = type::real;
        value.real = std::uniform_real_distribution<double>(-1e6, 1e6)(random_);
        object_.setReal(property, value.real);
        break;
      case 2:
        value.type = type::boolean;
        value.boolean = pick(2) == 0;
        object_.setBool(property, value.boolean);
        break;
      default:
        value.type = type::string;
        value.text = texts[pick(std::size(texts))];
        object_.setString(property, value.text.c_str());
        break;
    }
    *place.model = value;
  }

  void resize(Place& place) {
    const unsigned int size = pick(8) == 0 ? 11 : pick(5);
    ASSERT_TRUE(object_.resize(handleOf(place), size));
    if (size == 0 && place.model->elements.empty() && place.model->type == type::array) return;  // unchanged
    place.model->elements.resize(size);
    place.model->type = size > 0 ? type::array : type::null;
  }

  void eraseByName(Place& place) {
    auto& children = place.model->children;
    const std::string erased = pick(4) == 0 ? pickName() : std::next(children.begin(), pick(children.size()))->first;
    const bool present = children.count(erased) != 0;
    ASSERT_EQ(object_.eraseChild(handleOf(place), erased.c_str()), present) << place.path << " - " << erased;
    children.erase(erased);
    if (children.empty()) *place.model = Model();
  }

  void eraseByIndex(Place& place) {
    const unsigned int index = pick(place.model->elements.size() + 2);
    ASSERT_TRUE(object_.eraseChild(handleOf(place), index));
    if (index < place.model->elements.size()) place.model->elements.erase(place.model->elements.begin() + index);
  }

  void rename(Place& place) {
    auto& children = place.model->children;
    const std::string oldName = std::next(children.begin(), pick(children.size()))->first;
    const std::string newName = pickName();
    if (newName != oldName && children.count(newName) != 0) return;
    const unsigned int renamed = object_.renameChild(handleOf(place), oldName.c_str(), newName.c_str());
    ASSERT_NE(renamed, 0u) << place.path << ": " << oldName << " -> " << newName;
    Model moved = children[oldName];
    children.erase(oldName);
    children[newName] = moved;
    ASSERT_EQ(renamed, object_.getChild(handleOf(place), newName.c_str()));
  }

  void resetProperty(Place& place) {
    object_.resetProperty(handleOf(place));
    *place.model = Model();
  }

  void putFromSelf(Place& target, const Place& source) {
    const Model copy = *source.model;
    ASSERT_TRUE(object_.put(handleOf(target), object_, handleOf(source)));
    *target.model = copy;
  }

  // Through an object with its own small blocks and another string table.
  void putFromAnotherObject(Place& target, const Place& source) {
    DynamicObject::NodeAllocator allocator(4);
    StringTable strings(9);
    DynamicObject other(allocator, strings);
    ASSERT_TRUE(object_.retrieve(source.path.c_str(), other));
    ASSERT_EQ(dump(other, other.getRoot()), dump(*source.model));
    const Model copy = *source.model;
    ASSERT_TRUE(object_.put(handleOf(target), other));
    *target.model = copy;
  }

  void checkRetrieve(const Place& place) {
    DynamicObject other;
    ASSERT_TRUE(object_.retrieve(handleOf(place), other));
    ASSERT_EQ(dump(other, other.getRoot()), dump(*place.model));
  }

  // Copies hold the same tree; erased down to their root, they keep only the nodes that
  // were free in the source (the free list is not copied).
  void checkCopies() {
    DynamicObject copy(object_);
    const DynamicObject shared{DynamicObject::Ref(object_)};
    const std::string expected = dump(model_);
    ASSERT_EQ(dump(copy, copy.getRoot()), expected);
    ASSERT_EQ(dump(shared, shared.getRoot()), expected);
    const unsigned int inheritedFree = copy.countUsedNodes() - object_.countUsedNodes();
    copy.resetProperty(copy.getRoot());
    EXPECT_EQ(copy.countUsedNodes(), 3u + inheritedFree);
  }

  DynamicObject& object_;
  Model model_;
  unsigned int lastOperation_ = 0;
  std::mt19937 random_;
};

constexpr unsigned int seed = 20240611;

}  // namespace

TEST(DynamicObjectRandomized, AgreesWithAPlainTree) {
  std::cout << "seed " << seed << std::endl;
  nox::test::AssertionRecorder recorder;
  DynamicObject object;
  for (unsigned int round = 0; round < 4 && !HasFailure(); ++round) {
    RandomSession session(object, seed + round);
    session.run(1500, 10);
    if (!HasFailure()) session.eraseEverything();
  }
  EXPECT_EQ(recorder.count(), 0u) << (recorder.count() != 0 ? recorder.last() : "");
}

TEST(DynamicObjectRandomized, AgreesWithAPlainTreeAcrossSmallSharedBlocks) {
  std::cout << "seed " << seed << std::endl;
  nox::test::AssertionRecorder recorder;
  DynamicObject::NodeAllocator allocator(8);
  StringTable strings(0);
  DynamicObject object(allocator, strings);
  RandomSession session(object, seed + 100);
  session.run(3000, 10);
  if (!HasFailure()) session.eraseEverything();
  EXPECT_EQ(recorder.count(), 0u) << (recorder.count() != 0 ? recorder.last() : "");
}
