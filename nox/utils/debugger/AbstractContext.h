// One frame of what an entity is doing, the debugger's counterpart of a call frame.
// Engines push and pop contexts on their entities' stacks through the
// EngineDebuggerFacade; clients read them as resources. Concrete contexts belong to the
// engines: they say where they are (a Uri) and how they show themselves.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/StaticObject.h>

namespace nox::utils {
class AbstractObjectBuilder;
class Uri;
}  // namespace nox::utils

namespace nox::utils::debugger {

class NOX_UTILS_API AbstractContext : public StaticObject {
  NOX_STATIC_OBJECT("nox::utils::debugger::AbstractContext", "2de10931-583e-4114-9c9b-349ff9368296",
                    &AbstractContext::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  ~AbstractContext() override;

  // Where the context is; shown as "location" in the context lists.
  virtual const Uri& getLocation() const = 0;
  // Writes the context as one value (no begin/end): the reply of
  // entities/<id>/contexts/<index>. Returns false when the builder refused an event.
  virtual bool serialize(AbstractObjectBuilder& builder) const = 0;
};

}  // namespace nox::utils::debugger
