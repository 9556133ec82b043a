// The result of every resource operation of an inspection engine. The HTTP server turns
// it into a reply code, so the numeric values are part of the wire contract.
#pragma once

namespace nox::utils::debugger::resources {

enum Status {
  // Nothing answers at that path.
  unknown = 0,
  // The path exists but the operation was refused or its reply could not be written.
  error = 1,
  done = 2,
};

}  // namespace nox::utils::debugger::resources
