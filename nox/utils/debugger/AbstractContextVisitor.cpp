#include <nox/utils/debugger/AbstractContextVisitor.h>

namespace nox::utils::debugger {

AbstractContextVisitor::~AbstractContextVisitor() = default;

}  // namespace nox::utils::debugger
