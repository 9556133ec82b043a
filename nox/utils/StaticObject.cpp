#include <nox/utils/StaticObject.h>

namespace nox::utils {
namespace {

bool declareNoMetadata(TypeManager&, AbstractLogger*) { return true; }

}  // namespace

StaticObject::~StaticObject() = default;

const char* StaticObject::getTypeName() const { return getClassTypeName(); }

const Uuid& StaticObject::getTypeId() const { return getClassTypeId(); }

StaticObject::MetadataSetter StaticObject::getMetadataSetter() const { return getClassMetadataSetter(); }

const Uuid& StaticObject::getClassTypeId() {
  static const Uuid id = Uuid::create("7027fee4-32de-4a3a-a634-65811d6429e2");
  return id;
}

const char* StaticObject::getClassTypeName() { return "nox::utils::StaticObject"; }

StaticObject::MetadataSetter StaticObject::getClassMetadataSetter() { return &declareNoMetadata; }

}  // namespace nox::utils
