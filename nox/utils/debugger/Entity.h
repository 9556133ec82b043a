// Entities are the simulated things engines register with the debugger, known by an
// unsigned 32-bit id. One value is reserved to mean "no entity".
#pragma once

namespace nox::utils::debugger {

constexpr unsigned int invalidEntity = 4294967295u;

}  // namespace nox::utils::debugger
