#include <nox/utils/debugger/AbstractContextFactory.h>

namespace nox::utils::debugger {

AbstractContextFactory::~AbstractContextFactory() = default;

}  // namespace nox::utils::debugger
