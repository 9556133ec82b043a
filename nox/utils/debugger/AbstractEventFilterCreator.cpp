#include <nox/utils/debugger/AbstractEventFilterCreator.h>

namespace nox::utils::debugger {

AbstractEventFilterCreator::~AbstractEventFilterCreator() = default;

type::Type AbstractEventFilterCreator::getValueType() const { return type::null; }

}  // namespace nox::utils::debugger
