#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

namespace nox::utils::debugger {

AbstractEventRequestVisitor::~AbstractEventRequestVisitor() = default;

}  // namespace nox::utils::debugger
