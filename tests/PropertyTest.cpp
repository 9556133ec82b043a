#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/Property.h>
#include <nox/utils/StaticObject.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/Vector3.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/AssertionRecorder.h"

using nox::utils::AbstractLogger;
using nox::utils::BufferLogger;
using nox::utils::DynamicObject;
using nox::utils::Property;
using nox::utils::StaticObject;
using nox::utils::String;
using nox::utils::TypeManager;
using nox::utils::Uuid;
using nox::utils::Vector3r;
using ::testing::ElementsAre;
namespace type = nox::utils::type;

namespace {

// What an engine's objects look like to the type system: an actor with a name, and a
// vehicle deriving from it with one property of every kind.
class Actor : public StaticObject {
  NOX_STATIC_OBJECT("test::Actor", "3f0c6f1e-2b7a-4d59-9a0e-5c1d7e2f4a61", &Actor::declareMetadata)

  static bool declareMetadata(TypeManager& types, AbstractLogger* logger) {
    return types.addBaseType(getClassTypeId(), StaticObject::getClassTypeId(), logger) &&
           types.registerProperty<Actor>("name", &Actor::getName, &Actor::setName, logger);
  }
  const String& getName() const { return name_; }
  void setName(const String& name) { name_ = name; }

 private:
  String name_;
};

class Vehicle : public Actor {
  NOX_STATIC_OBJECT("test::Vehicle", "8d2e4b6a-1c3f-4e5d-a7b9-0f1e2d3c4b5a", &Vehicle::declareMetadata)

  static bool declareMetadata(TypeManager& types, AbstractLogger* logger) {
    return types.addBaseType(getClassTypeId(), Actor::getClassTypeId(), logger) &&
           types.registerProperty<Vehicle>("wheels", &Vehicle::getWheels, &Vehicle::setWheels, logger) &&
           types.registerProperty<Vehicle>("speed", &Vehicle::getSpeed, &Vehicle::speed, logger) &&
           types.registerProperty<Vehicle>("parked", &Vehicle::isParked, &Vehicle::setParked, logger) &&
           types.registerProperty<Vehicle>("cargo", &Vehicle::getCargo, &Vehicle::setCargo, logger) &&
           types.registerProperty<Vehicle>("position", &Vehicle::position, &Vehicle::position, logger);
  }
  int getWheels() const { return wheels_; }
  void setWheels(int wheels) { wheels_ = wheels; }
  double getSpeed() const { return speed_; }
  double& speed() { return speed_; }
  bool isParked() const { return parked_; }
  void setParked(bool parked) { parked_ = parked; }
  const DynamicObject& getCargo() const { return cargo_; }
  void setCargo(const DynamicObject& cargo) { cargo_ = cargo; }

  Vector3r position{1, 2, 3};

 private:
  int wheels_ = 4;
  double speed_ = 0;
  bool parked_ = true;
  DynamicObject cargo_;
};

template <class T>
std::string text(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

class PropertyTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(types.registerBaseTypes(&logger)); }
  std::vector<std::string> messages() const {
    std::vector<std::string> result;
    for (const BufferLogger::Entry& entry : logger.getEntries()) result.emplace_back(entry.message.c_str());
    return result;
  }
  BufferLogger logger{true, true, true};
  TypeManager types;
};

}  // namespace

TEST_F(PropertyTest, DefaultPropertyIsInvalid) {
  nox::test::AssertionRecorder assertions;
  Property property;
  EXPECT_FALSE(property.isValid());
  EXPECT_STREQ(property.getKey(), "");
  EXPECT_EQ(property.getType(), type::null);
  EXPECT_FALSE(property.hasMutableGet());
  EXPECT_EQ(text(property), "invalid property");
  EXPECT_THAT(assertions.messages(), ElementsAre("Invalid property.", "Invalid property.", "Invalid property."));
}

TEST_F(PropertyTest, SetUpReportsEachRefusal) {
  Property property;
  EXPECT_FALSE(property.setUp<Vehicle>("", &Vehicle::getWheels, &Vehicle::setWheels, types, &logger));
  EXPECT_FALSE(property.setUp<Vehicle>(nullptr, &Vehicle::getWheels, &Vehicle::setWheels, types, &logger));
  EXPECT_FALSE(property.setUp<Vehicle>("wheels", static_cast<int (Vehicle::*)() const>(nullptr), &Vehicle::setWheels,
                                       types, &logger));
  EXPECT_FALSE(property.setUp<Vehicle>("wheels", &Vehicle::getWheels, static_cast<void (Vehicle::*)(int)>(nullptr),
                                       types, &logger));
  EXPECT_FALSE(property.setUp<Vehicle>("wheels", &Vehicle::getWheels, &Vehicle::setWheels, types, &logger));
  EXPECT_FALSE(property.isValid());
  EXPECT_THAT(messages(), ElementsAre("Invalid property name.", "Invalid property name.", "Invalid getter pointer.",
                                      "Invalid getter pointer.", "Invalid owner type."));

  // A value type the manager does not know: the property stays invalid.
  struct Unknown {
    static const Uuid& getClassTypeId() {
      static const Uuid id = Uuid::create("99999999-0000-0000-0000-000000000000");
      return id;
    }
  };
  struct Holder {
    Unknown value;
    static const Uuid& getClassTypeId() { return nox::utils::details::getClassTypeId<Vector3r>(); }
  };
  logger.clear();
  EXPECT_FALSE(property.setUp<Holder>("value", &Holder::value, &Holder::value, types, &logger));
  EXPECT_THAT(messages(), ElementsAre("Invalid value type."));
  EXPECT_FALSE(property.isValid());
}

TEST_F(PropertyTest, KindsCompatibilityAndText) {
  ASSERT_TRUE(types.registerStaticObjectType<Actor>(&logger));
  ASSERT_TRUE(types.registerStaticObjectType<Vehicle>(&logger));
  const Uuid& vehicle = Vehicle::getClassTypeId();
  const Property& speed = types.getProperty(vehicle, "speed");
  const Property& name = types.getProperty(vehicle, "name");
  const Property& position = types.getProperty(vehicle, "position");
  EXPECT_TRUE(speed.isReal());
  EXPECT_TRUE(speed.isTypeCompatible(type::integer));
  EXPECT_FALSE(speed.isTypeCompatible(type::string));
  EXPECT_TRUE(name.isString());
  EXPECT_FALSE(name.isTypeCompatible(type::integer));
  EXPECT_TRUE(types.getProperty(vehicle, "wheels").isInt());
  EXPECT_TRUE(types.getProperty(vehicle, "parked").isBool());
  EXPECT_TRUE(types.getProperty(vehicle, "cargo").isDynamicObject());
  EXPECT_TRUE(position.isVector3() && position.isObject() && !position.isVector2() && !position.isStaticObject());
  EXPECT_TRUE(speed.hasMutableGet());
  EXPECT_FALSE(name.hasMutableGet());
  EXPECT_EQ(name.getOwnerTypeId(), Actor::getClassTypeId());
  EXPECT_EQ(text(position), "position (nox::utils::Vector3r)");
  EXPECT_EQ(&speed.getTypeManager(), &types);

  // The copy owns its own accessor.
  Property copy = speed;
  copy = copy;
  Property assigned;
  assigned = copy;
  Vehicle car;
  double value = 0;
  EXPECT_TRUE(assigned.getValue(car, value));

  nox::test::AssertionRecorder assertions;
  int wrong = 0;
  Actor actor;
  EXPECT_FALSE(speed.getValue(car, wrong));
  EXPECT_FALSE(speed.getValue(actor, value));
  EXPECT_EQ(name.getMutableValue<String>(car), nullptr);
  EXPECT_THAT(assertions.messages(),
              ElementsAre("The property speed (double) does not hold values of the type "
                          "{1bc45061-9b2d-47a0-91e4-366d093a370b}.",
                          "The given instance holds no object of the type owning the property speed (double).",
                          "Mutable get not available"));
}

// The way an engine exposes its objects to an inspector: register the classes, create
// an instance by type id, reach its members through the properties, and copy every
// property into a dynamic object.
TEST_F(PropertyTest, WorkedExampleOfAnInspectedObject) {
  ASSERT_TRUE(types.registerStaticObjectType<Actor>(&logger));
  ASSERT_TRUE(types.registerStaticObjectType<Vehicle>(&logger));
  ASSERT_TRUE(types.registerStaticObjectType<Vehicle>(&logger));  // a second time changes nothing
  const Uuid& id = Vehicle::getClassTypeId();
  EXPECT_TRUE(types.isStaticObject(id));
  EXPECT_TRUE(types.isDerivedFrom(id, Actor::getClassTypeId()));
  EXPECT_EQ(types.countProperties(id), 6u);

  StaticObject* object = types.createStaticObject(id, &logger);
  ASSERT_NE(object, nullptr);
  EXPECT_STREQ(object->getTypeName(), "test::Vehicle");
  EXPECT_EQ(object->getTypeId(), id);

  // Written and read through the base class, as inspection code holds objects.
  EXPECT_TRUE(types.getProperty(id, "name").setValue(*object, String("truck")));
  EXPECT_TRUE(types.getProperty(id, "wh").setValue(*object, 6));
  EXPECT_TRUE(types.getProperty(id, "parked").setValue(*object, false));
  *types.getProperty(id, "speed").getMutableValue<double>(*object) = 12.5;
  EXPECT_TRUE(types.getProperty(id, "pos").setValue(*object, Vector3r{4, 5, 6}));
  DynamicObject cargo;
  cargo.setInt(cargo.addChild(cargo.getRoot(), "crates"), 3);
  EXPECT_TRUE(types.getProperty(id, "cargo").setValue(*object, cargo));
  const Vehicle& vehicle = dynamic_cast<const Vehicle&>(*object);
  EXPECT_EQ(vehicle.getName(), "truck");
  EXPECT_EQ(vehicle.getWheels(), 6);
  EXPECT_EQ(vehicle.position, (Vector3r{4, 5, 6}));
  double speed = 0;
  EXPECT_TRUE(types.getProperty(id, "speed").getValue(*object, speed));
  EXPECT_EQ(speed, 12.5);

  DynamicObject inspected;
  for (unsigned int index = 0; index < types.countProperties(id); ++index) {
    const Property& property = types.getProperty(id, index);
    unsigned int handle = inspected.addChild(inspected.getRoot(), property.getKey());
    EXPECT_TRUE(property.putValue(*object, inspected, handle, &logger)) << property;
  }
  EXPECT_EQ(inspected.countChildren(inspected.getRoot()), 6u);
  EXPECT_STREQ(inspected.getString("name"), "truck");
  EXPECT_EQ(inspected.getInt("wheels"), 6);
  EXPECT_EQ(inspected.getReal("speed"), 12.5);
  EXPECT_FALSE(inspected.getBool("parked"));
  EXPECT_EQ(inspected.getInt("cargo.crates"), 3);
  EXPECT_EQ(inspected.getReal("position.z"), 6.0);
  EXPECT_TRUE(logger.getEntries().empty());
  types.destroyStaticObject(object);

  // A value type without a conversion is refused with a message.
  struct Odd {
    static const Uuid& getClassTypeId() { return idOdd(); }
    static const Uuid& idOdd() {
      static const Uuid id = Uuid::create("0dd00000-0000-0000-0000-000000000000");
      return id;
    }
  };
  EXPECT_FALSE(nox::utils::details::putInspectableObjectHelper(inspected, inspected.getRoot(), Odd(), types, &logger));
  EXPECT_THAT(messages(), ElementsAre("Values of the type {0dd00000-0000-0000-0000-000000000000} cannot be put into a "
                                      "dynamic object."));
}
