// Passes the events of the listed entities.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventFilter.h>

namespace nox::utils::debugger {

class NOX_UTILS_API EntitiesFilter : public AbstractEventFilter {
  NOX_STATIC_OBJECT("nox::utils::debugger::EntitiesFilter", "7466a2e4-e4e5-4b18-9716-d8232f781e42",
                    &EntitiesFilter::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  EntitiesFilter() = default;
  // Copies `count` ids; `entities` may be null when `count` is 0.
  EntitiesFilter(const unsigned int* entities, unsigned int count);

  bool operator()(unsigned int entity) const;
  const Vector<unsigned int>& getEntities() const { return entities_; }

 private:
  Vector<unsigned int> entities_;
};

}  // namespace nox::utils::debugger
