#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectCompositePredicate.h>
#include <nox/utils/DynamicObjectPropertyComparison.h>
#include <nox/utils/DynamicValue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/AssertionRecorder.h"

using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::DynamicObjectCompositePredicate;
using nox::utils::DynamicValue;
using Comparison = nox::utils::DynamicObjectPropertyComparison;
using ::testing::ElementsAre;

namespace {

// {"x": 3.9, "n": 4, "name": "abc", "flag": true, "list": [1]}
class PredicateTest : public ::testing::Test {
 protected:
  PredicateTest() {
    unsigned int root = object.getRoot();
    object.setReal(object.addChild(root, "x", 1), 3.9);
    object.setInt(object.addChild(root, "n", 1), 4);
    object.setString(object.addChild(root, "name", 4), "abc");
    object.setBool(object.addChild(root, "flag", 4), true);
    unsigned int list = object.addChild(root, "list", 4);
    object.resize(list, 1);
    object.setInt(object.getChild(list, 0u), 1);
  }

  // The outcomes of the six comparators, in enumeration order.
  std::vector<bool> outcomes(const char* key, const DynamicValue& value) {
    std::vector<bool> results;
    for (Comparison::Comparator comparator : {Comparison::equal, Comparison::notEqual, Comparison::greater,
                                              Comparison::less, Comparison::greaterOrEqual, Comparison::lessOrEqual}) {
      results.push_back(Comparison(key, comparator, value).evaluate(object, nullptr));
    }
    return results;
  }

  DynamicObject object;
};

}  // namespace

TEST_F(PredicateTest, ComparesInTheTypeOfTheValue) {
  // Property on the left: 4 against 3, 4, 5.
  EXPECT_THAT(outcomes("n", DynamicValue(3)), ElementsAre(false, true, true, false, true, false));
  EXPECT_THAT(outcomes("n", DynamicValue(4)), ElementsAre(true, false, false, false, true, true));
  EXPECT_THAT(outcomes("n", DynamicValue(5)), ElementsAre(false, true, false, true, false, true));
  // The real 3.9 read as an integer is 3.
  EXPECT_THAT(outcomes("x", DynamicValue(3)), ElementsAre(true, false, false, false, true, true));
  EXPECT_THAT(outcomes("x", DynamicValue(3.95)), ElementsAre(false, true, false, true, false, true));
  EXPECT_THAT(outcomes("list[0]", DynamicValue(1.0)), ElementsAre(true, false, false, false, true, true));
  EXPECT_THAT(outcomes("name", DynamicValue("abd")), ElementsAre(false, true, false, true, false, true));
  EXPECT_THAT(outcomes("name", DynamicValue("ab")), ElementsAre(false, true, true, false, true, false));
  EXPECT_THAT(outcomes("name", DynamicValue("abc")), ElementsAre(true, false, false, false, true, true));
  EXPECT_THAT(outcomes("flag", DynamicValue(true)), ElementsAre(true, false, false, false, true, true));
  EXPECT_THAT(outcomes("flag", DynamicValue(false)), ElementsAre(false, true, true, false, true, false));
}

TEST_F(PredicateTest, NaNFailsEveryComparisonButNotEqual) {
  EXPECT_THAT(outcomes("x", DynamicValue(std::numeric_limits<double>::quiet_NaN())),
              ElementsAre(false, true, false, false, false, false));
}

TEST_F(PredicateTest, MissingPropertyIsLoggedAndFalse) {
  BufferLogger logger(true, true, true);
  EXPECT_FALSE(Comparison("a.b", Comparison::notEqual, DynamicValue(1)).evaluate(object, &logger));
  ASSERT_EQ(logger.getEntries().size(), 1u);
  EXPECT_EQ(logger.getEntries()[0].kind, 'e');
  EXPECT_STREQ(logger.getEntries()[0].message.c_str(), "object has no property a.b, unable to evaluate condition");
  EXPECT_FALSE(Comparison("a.b", Comparison::notEqual, DynamicValue(1)).evaluate(object, nullptr));
}

TEST_F(PredicateTest, BrokenContractsAreAssertedAndFalse) {
  nox::test::AssertionRecorder assertions;
  EXPECT_FALSE(Comparison("n", Comparison::equal, DynamicValue()).evaluate(object, nullptr));
  EXPECT_EQ(assertions.last(), "unexpected value type detected 0");
  EXPECT_FALSE(Comparison("n", static_cast<Comparison::Comparator>(7), DynamicValue(4)).evaluate(object, nullptr));
  EXPECT_EQ(assertions.last(), "unexpected comparator detected 7");
  Comparison rootCondition(nullptr, Comparison::equal, DynamicValue(1));
  EXPECT_EQ(assertions.last(), "null pointer not allowed as key when creating a simple condition");
  EXPECT_STREQ(rootCondition.getKey(), "");
  EXPECT_EQ(assertions.count(), 3u);
}

TEST_F(PredicateTest, CopiesOwnTheirValue) {
  Comparison original("name", Comparison::less, DynamicValue("abd"));
  Comparison copy(original);
  Comparison assigned("n", Comparison::equal, DynamicValue(0));
  assigned = original;
  original = Comparison("n", Comparison::equal, DynamicValue(4));
  for (const Comparison* comparison : {&copy, &assigned}) {
    EXPECT_STREQ(comparison->getKey(), "name");
    EXPECT_EQ(comparison->getComparator(), Comparison::less);
    EXPECT_STREQ(comparison->getValue().getString(), "abd");
    EXPECT_TRUE(comparison->evaluate(object, nullptr));
  }
}

TEST_F(PredicateTest, CompositeIsTheConjunction) {
  DynamicObjectCompositePredicate composite;
  EXPECT_TRUE(composite.evaluate(object, nullptr));
  Comparison holds("n", Comparison::equal, DynamicValue(4));
  Comparison fails("flag", Comparison::equal, DynamicValue(false));
  composite.addPredicate(holds);
  composite.addPredicate(holds);
  EXPECT_TRUE(composite.evaluate(object, nullptr));
  composite.addPredicate(fails);
  EXPECT_FALSE(composite.evaluate(object, nullptr));

  DynamicObjectCompositePredicate failingFirst;
  failingFirst.addPredicate(fails);
  failingFirst.addPredicate(holds);
  EXPECT_FALSE(failingFirst.evaluate(object, nullptr));

  DynamicObjectCompositePredicate copy(composite);
  EXPECT_EQ(copy.countPredicates(), 3u);
  EXPECT_STREQ(copy.getPredicate(2).getKey(), "flag");
  EXPECT_FALSE(copy.evaluate(object, nullptr));
}

TEST_F(PredicateTest, CompositeIndexOutOfBoundsIsAsserted) {
  nox::test::AssertionRecorder assertions;
  DynamicObjectCompositePredicate composite;
  composite.getPredicate(0);
  EXPECT_EQ(assertions.last(), "index out of bounds when accessing simple conditions");
}
