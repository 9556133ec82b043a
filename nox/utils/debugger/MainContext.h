// The context that stands for the simulation itself, at "nox:simulation": what an
// engine pushes for work that belongs to no narrower frame.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractContext.h>

namespace nox::utils::debugger {

class NOX_UTILS_API MainContext : public AbstractContext {
  NOX_STATIC_OBJECT("nox::utils::debugger::MainContext", "8f1372e9-e974-4dd9-b8e2-a1c776ec07df",
                    &MainContext::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);
  // "nox:simulation", shared by every main context.
  static const Uri& getMainLocation();

  const Uri& getLocation() const override;
  // An object with one member, "location".
  bool serialize(AbstractObjectBuilder& builder) const override;
};

}  // namespace nox::utils::debugger
