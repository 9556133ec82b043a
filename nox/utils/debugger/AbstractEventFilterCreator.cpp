#include <nox/utils/debugger/AbstractEventFilterCreator.h>

namespace nox::utils::debugger {

AbstractEventFilterCreator::~AbstractEventFilterCreator() = default;

}  // namespace nox::utils::debugger
