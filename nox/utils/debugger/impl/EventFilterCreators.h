// The filter creators every inspection framework starts with, one per member a client
// may give a subscription: "entities" (an array of entity ids), "location" (the text of
// a Uri) and "hitcount" (the count from which a hit-count filter passes).
#pragma once

#include <nox/utils/debugger/EngineDebuggerFacade.h>

namespace nox::utils {
class AbstractLogger;
}

namespace nox::utils::debugger::impl {

void registerBuiltInFilterCreators(EngineDebuggerFacade::EventFilterCreatorFactory& factory, AbstractLogger* logger);

}  // namespace nox::utils::debugger::impl
