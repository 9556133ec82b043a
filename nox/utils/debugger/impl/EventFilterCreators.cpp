#include <nox/utils/debugger/impl/EventFilterCreators.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/EntitiesFilter.h>
#include <nox/utils/debugger/HitCountFilter.h>
#include <nox/utils/debugger/LocationFilter.h>

#include <cstdint>
#include <limits>

namespace nox::utils::debugger::impl {
namespace {

// "entities": an array of entity ids.
class EntitiesFilterCreator : public AbstractEventFilterCreator {
 public:
  type::Type getValueType() const override { return type::array; }
  AbstractEventFilter* create(const DynamicObject& data, unsigned int property, AbstractLogger*) const override {
    if (data.getType(property) != type::array) return nullptr;
    Vector<unsigned int> entities;
    for (unsigned int i = 0, count = data.countChildren(property); i < count; ++i) {
      const unsigned int element = data.getChild(property, i);
      if (data.getType(element) != type::integer) return nullptr;
      const std::int64_t entity = data.getInt(element);
      if (entity < 0 || entity > std::numeric_limits<unsigned int>::max()) return nullptr;
      entities.push_back(static_cast<unsigned int>(entity));
    }
    return NOX_NEW EntitiesFilter(entities.data(), static_cast<unsigned int>(entities.size()));
  }
};

// "location": the text of a Uri.
class LocationFilterCreator : public AbstractEventFilterCreator {
 public:
  type::Type getValueType() const override { return type::string; }
  AbstractEventFilter* create(const DynamicObject& data, unsigned int property, AbstractLogger* logger) const override {
    if (data.getType(property) != type::string) return nullptr;
    Uri location;
    if (!location.set(data.getString(property), logger)) return nullptr;
    return NOX_NEW LocationFilter(location);
  }
};

// "hitcount": the count of a filter that passes from that hit on.
class HitCountFilterCreator : public AbstractEventFilterCreator {
 public:
  type::Type getValueType() const override { return type::integer; }
  AbstractEventFilter* create(const DynamicObject& data, unsigned int property, AbstractLogger*) const override {
    if (data.getType(property) != type::integer) return nullptr;
    const std::int64_t count = data.getInt(property);
    if (count < std::numeric_limits<std::int32_t>::min() || count > std::numeric_limits<std::int32_t>::max()) {
      return nullptr;
    }
    return NOX_NEW HitCountFilter(static_cast<std::int32_t>(count), HitCountFilter::atLeast);
  }
};

}  // namespace

void registerBuiltInFilterCreators(EngineDebuggerFacade::EventFilterCreatorFactory& factory, AbstractLogger* logger) {
  factory.registerCreator("entities", NOX_NEW EntitiesFilterCreator(), logger);
  factory.registerCreator("location", NOX_NEW LocationFilterCreator(), logger);
  factory.registerCreator("hitcount", NOX_NEW HitCountFilterCreator(), logger);
}

}  // namespace nox::utils::debugger::impl
