#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/Property.h>
#include <nox/utils/Quaternion.h>
#include <nox/utils/StaticObject.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/Vector2.h>
#include <nox/utils/Vector3.h>
#include <nox/utils/details/ClassTypeId.h>
#include <nox/utils/details/TypeMetadata.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/AssertionRecorder.h"

using nox::utils::BufferLogger;
using nox::utils::Property;
using nox::utils::StaticObject;
using nox::utils::String;
using nox::utils::TypeManager;
using nox::utils::Uuid;
using nox::utils::details::getClassTypeId;
using nox::utils::details::TypeMetadata;
using ::testing::ElementsAre;
namespace type = nox::utils::type;
namespace error = nox::utils::error;

namespace {

const Uuid idA = Uuid::create("a0000000-0000-0000-0000-000000000001");
const Uuid idB = Uuid::create("b0000000-0000-0000-0000-000000000002");
const Uuid idC = Uuid::create("c0000000-0000-0000-0000-000000000003");

std::vector<std::string> messages(const BufferLogger& logger) {
  std::vector<std::string> result;
  for (const BufferLogger::Entry& entry : logger.getEntries()) result.emplace_back(entry.message.c_str());
  return result;
}

template <class T>
std::string text(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

// A plain owner type for properties, registered as "C".
struct Sample {
  double position = 0;
  double name = 0;
  double own = 0;
  static const Uuid& getClassTypeId() { return idC; }
};

Property sampleProperty(TypeManager& types, const char* key) {
  Property property;
  EXPECT_TRUE(property.setUp<Sample>(key, &Sample::position, &Sample::position, types, nullptr));
  return property;
}

class TypeManagerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(types.registerBaseTypes(&logger));
    ASSERT_TRUE(types.registerType(idC, "C", &logger));
  }
  BufferLogger logger{true, true, true};
  TypeManager types;
};

}  // namespace

TEST_F(TypeManagerTest, RegistersTheBuiltInTypes) {
  struct BuiltIn {
    const Uuid& id;
    const char* text;
    const char* name;
    type::Type kind;
  };
  const BuiltIn builtIns[] = {
      {getClassTypeId<int>(), "1bc45061-9b2d-47a0-91e4-366d093a370b", "int", type::integer},
      {getClassTypeId<std::int64_t>(), "6f6dce75-d95d-4da8-944c-94fece5c8e4d", "int64", type::integer},
      {getClassTypeId<double>(), "897618b0-7479-4a89-8ab7-23fa13f16316", "double", type::real},
      {getClassTypeId<float>(), "8e6fc8dd-2cee-4bc0-b1d8-87142e68d777", "float", type::real},
      {getClassTypeId<bool>(), "23aa4943-a9fb-4472-a4f0-35a0bf88f41e", "bool", type::boolean},
      {getClassTypeId<String>(), "ad7b0b58-c164-4d3f-be4a-327ace48624c", "nox::utils::String", type::string},
      {getClassTypeId<nox::utils::Vector3r>(), "f31f94dc-07a5-462f-b055-7be3506a7b36", "nox::utils::Vector3r",
       type::object},
      {getClassTypeId<nox::utils::Vector2r>(), "848ef37e-0b2f-4805-85b3-f0b3b14f0fd0", "nox::utils::Vector2r",
       type::object},
      {getClassTypeId<nox::utils::Quaternionr>(), "509e70d9-c3f4-48e6-8072-614b6805fa48", "nox::utils::Quaternionr",
       type::object},
      {getClassTypeId<nox::utils::DynamicObject>(), "0775eb00-e4e6-4c6a-83fb-a970e0cbc092", "nox::utils::DynamicObject",
       type::object},
      {getClassTypeId<StaticObject>(), "7027fee4-32de-4a3a-a634-65811d6429e2", "nox::utils::StaticObject",
       type::object},
  };
  for (const BuiltIn& builtIn : builtIns) {
    EXPECT_EQ(text(builtIn.id), builtIn.text);
    EXPECT_STREQ(types.getTypeName(builtIn.id), builtIn.name);
    EXPECT_EQ(types.getTypeId(builtIn.name), builtIn.id);
    EXPECT_EQ(types.getType(builtIn.id), builtIn.kind) << builtIn.name;
  }
  EXPECT_EQ(types.getType(idC), type::object);
  const Uuid& quaternion = getClassTypeId<nox::utils::Quaternionr>();
  ASSERT_EQ(types.countProperties(quaternion), 4u);
  for (unsigned int index = 0; index < 4; ++index) {
    EXPECT_STREQ(types.getProperty(quaternion, index).getKey(), std::string(1, "xyzw"[index]).c_str());
    EXPECT_TRUE(types.getProperty(quaternion, index).isReal());
  }
  EXPECT_TRUE(types.isStaticObject(StaticObject::getClassTypeId()));
  EXPECT_FALSE(types.isStaticObject(idC));
  // Asking again registers nothing twice.
  EXPECT_TRUE(types.registerBaseTypes(&logger));
  EXPECT_EQ(types.countProperties(getClassTypeId<nox::utils::Vector3r>()), 3u);
  EXPECT_TRUE(logger.getEntries().empty());

  types.unregisterBaseTypes();
  EXPECT_FALSE(types.isTypeRegistered("int"));
  EXPECT_TRUE(types.isTypeRegistered("C"));
  types.clearTypes();
  EXPECT_FALSE(types.isTypeRegistered(idC));
}

TEST_F(TypeManagerTest, RegisterTypeRefusesTakenIdsAndNames) {
  EXPECT_TRUE(types.registerType(idC, "C", &logger));
  EXPECT_TRUE(logger.getEntries().empty());
  EXPECT_FALSE(types.registerType(idC, "Other", &logger));
  EXPECT_FALSE(types.registerType(idA, "C", &logger));
  EXPECT_THAT(messages(logger),
              ElementsAre("While trying to register a type with name Other, another type named C,  was found with "
                          "the same id, c0000000-0000-0000-0000-000000000003.",
                          "While trying to register a type with id {a0000000-0000-0000-0000-000000000001}, another "
                          "type with id {c0000000-0000-0000-0000-000000000003}, was found with the same name 'C'."));
  EXPECT_EQ(logger.getEntries()[1].error, error::invalidArgument);
  EXPECT_FALSE(types.isTypeRegistered(idA));
  EXPECT_FALSE(types.isTypeRegistered("Other"));
}

TEST_F(TypeManagerTest, DerivationAndCycles) {
  ASSERT_TRUE(types.registerType(idA, "A", &logger));
  ASSERT_TRUE(types.registerType(idB, "B", &logger));
  EXPECT_TRUE(types.isDerivedFrom(idA, idA));
  EXPECT_FALSE(types.isDerivedFrom(Uuid(), Uuid()));
  ASSERT_TRUE(types.addBaseType(idB, idA, &logger));
  ASSERT_TRUE(types.addBaseType(idC, idB, &logger));
  EXPECT_TRUE(types.isDerivedFrom(idC, idA));
  EXPECT_FALSE(types.isDerivedFrom(idA, idC));
  // Already derived indirectly: accepted, nothing added.
  EXPECT_TRUE(types.addBaseType(idC, idA, &logger));
  // The names come out in the opposite order to what the wording suggests.
  EXPECT_FALSE(types.addBaseType(idA, idC, &logger));
  EXPECT_FALSE(types.addBaseType(idA, idA, &logger));
  EXPECT_THAT(messages(logger), ElementsAre("The given type,A, derives from the current type, C.",
                                            "The given type,A, derives from the current type, A."));

  // Unregistering a base removes it from the types that derived from it.
  types.unregisterType(idB);
  EXPECT_FALSE(types.isDerivedFrom(idC, idA));
  EXPECT_TRUE(types.addBaseType(idA, idC, &logger));
}

TEST_F(TypeManagerTest, MetadataCountsAndFindsInheritedProperties) {
  TypeMetadata b("B", idB), c("C", idC);
  b.addProperty(sampleProperty(types, "position"));
  b.addProperty(sampleProperty(types, "name"));
  c.addProperty(sampleProperty(types, "own"));
  ASSERT_TRUE(c.addBaseType(b, nullptr));
  EXPECT_EQ(c.getType(), type::object);
  EXPECT_EQ(c.countProperties(), 3u);
  EXPECT_STREQ(c.getProperty(0u).getKey(), "own");
  EXPECT_STREQ(c.getProperty(2u).getKey(), "name");
  EXPECT_STREQ(c.getProperty("pos")->getKey(), "position");
  EXPECT_STREQ(c.getProperty("nameless", 4)->getKey(), "name");
  EXPECT_EQ(c.getProperty("names"), nullptr);
  EXPECT_EQ(c.getProperty(nullptr, 1), nullptr);
  EXPECT_TRUE(c.hasProperty("o"));
  EXPECT_EQ(&c.getBaseType(0), &b);

  nox::test::AssertionRecorder assertions;
  EXPECT_FALSE(c.getProperty(3u).isValid());
  EXPECT_EQ(c.getBaseType(1).countProperties(), 0u);
  EXPECT_THAT(assertions.messages(), ElementsAre("Invalid property index", "Invalid base type index"));
  c.removeBaseType(b);
  EXPECT_EQ(c.countBaseTypes(), 0u);
}

TEST_F(TypeManagerTest, LookupContractsAndPropertyPrefixes) {
  ASSERT_TRUE(types.registerProperty<Sample>("position", &Sample::position, &Sample::position, &logger));
  EXPECT_TRUE(types.isPropertyRegistered(idC, "pos"));
  EXPECT_TRUE(types.isPropertyRegistered(idC, "posX", 3));
  EXPECT_STREQ(types.getProperty(idC, "p").getKey(), "position");

  nox::test::AssertionRecorder assertions;
  EXPECT_FALSE(types.getProperty(idC, "speed").isValid());
  EXPECT_FALSE(types.isPropertyRegistered(idC, nullptr));
  EXPECT_FALSE(types.getTypeId("Unknown").isValid());
  EXPECT_STREQ(types.getTypeName(idA), "");
  EXPECT_THAT(assertions.messages(),
              ElementsAre("The type c0000000-0000-0000-0000-000000000003 have no registered property named speed.",
                          "Invalid key", "No type having the name Unknown is registered.",
                          "No type having the id a0000000-0000-0000-0000-000000000001 is registered."));
}

TEST_F(TypeManagerTest, CreateStaticObjectReportsCrossedMessages) {
  nox::test::AssertionRecorder assertions;
  EXPECT_EQ(types.createStaticObject(idA, &logger), nullptr);
  EXPECT_THAT(assertions.messages(),
              ElementsAre("No type having the id a0000000-0000-0000-0000-000000000001 is registered."));
  EXPECT_EQ(types.createStaticObject(idC, &logger), nullptr);
  EXPECT_EQ(types.createStaticObject(idA, nullptr), nullptr);
  EXPECT_EQ(assertions.count(), 1u);  // no logger, no name lookup
  EXPECT_THAT(messages(logger),
              ElementsAre("No registered creator for .",
                          "No type having the id c0000000-0000-0000-0000-000000000003 is registered."));

  // Creators: owned in every case, one per registered type.
  struct Maker : TypeManager::StaticObjectCreator {
    StaticObject* operator()(nox::utils::AbstractLogger*) const override { return NOX_NEW StaticObject(); }
  };
  logger.clear();
  EXPECT_FALSE(types.registerCreator(idA, NOX_NEW Maker(), &logger));
  EXPECT_FALSE(types.registerCreator(idC, nullptr, &logger));
  EXPECT_TRUE(types.registerCreator(idC, NOX_NEW Maker(), &logger));
  EXPECT_FALSE(types.registerCreator(idC, NOX_NEW Maker(), &logger));
  StaticObject* object = types.createStaticObject(idC, &logger);
  ASSERT_NE(object, nullptr);
  EXPECT_STREQ(object->getTypeName(), "nox::utils::StaticObject");
  types.destroyStaticObject(object);
  types.destroyStaticObject(nullptr);
  EXPECT_TRUE(types.unregisterCreator(idC, &logger));
  EXPECT_FALSE(types.unregisterCreator(idC, &logger));
  EXPECT_THAT(messages(logger),
              ElementsAre("Unable to register a creator for the type {a0000000-0000-0000-0000-000000000001}, no type "
                          "having this id is registered.",
                          "No creator given for the type {c0000000-0000-0000-0000-000000000003}.",
                          "A creator is already registered for the type C {c0000000-0000-0000-0000-000000000003}.",
                          "No creator is registered for the type {c0000000-0000-0000-0000-000000000003}."));
  // Unregistering a type takes its creator along.
  EXPECT_TRUE(types.registerCreator(idC, NOX_NEW Maker(), &logger));
  types.unregisterType(idC);
  EXPECT_FALSE(types.isCreatorRegistered(idC));
}

TEST_F(TypeManagerTest, DynamicObjectPropertiesMatchRunTimeTypesByTheirKind) {
  nox::utils::DynamicObject object;
  const unsigned int count = object.addChild(object.getRoot(), "count");
  object.setInt(count, 3);
  EXPECT_TRUE(object.isTypeCompatible(count, getClassTypeId<double>(), types));
  EXPECT_TRUE(object.isTypeCompatible("count", getClassTypeId<int>(), types));
  EXPECT_FALSE(object.isTypeCompatible("count", 5, getClassTypeId<String>(), types));
  EXPECT_FALSE(object.isTypeCompatible(count, idC, types));  // a user type is an object
  // A missing property counts as null, which fits every type.
  EXPECT_TRUE(object.isTypeCompatible("missing", getClassTypeId<bool>(), types));
}
