#include <nox/utils/debugger/AbstractEventFilterVisitor.h>

namespace nox::utils::debugger {

AbstractEventFilterVisitor::~AbstractEventFilterVisitor() = default;

}  // namespace nox::utils::debugger
