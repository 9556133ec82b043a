#include <nox/utils/debugger/AbstractEventRequest.h>

#include <nox/allocator/Owned.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractEventFilter.h>
#include <nox/utils/debugger/AbstractEventRequestVisitor.h>

#include <algorithm>
#include <cstring>

namespace nox::utils::debugger {
namespace {

constexpr const char* kKindNames[] = {"initialization", "termination",    "disconnection", "suspension",
                                      "registration",   "unregistration", "breakpoint"};
constexpr std::int32_t kKindCount = static_cast<std::int32_t>(sizeof(kKindNames) / sizeof(kKindNames[0]));

}  // namespace

const char* getEventKindName(std::int32_t kind) { return kind >= 0 && kind < kKindCount ? kKindNames[kind] : nullptr; }

std::int32_t findEventKind(const char* name, unsigned int length) {
  if (name == nullptr) return -1;
  for (std::int32_t kind = 0; kind < kKindCount; ++kind) {
    if (std::strlen(kKindNames[kind]) == length && std::strncmp(kKindNames[kind], name, length) == 0) return kind;
  }
  return -1;
}

bool AbstractEventRequest::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), StaticObject::getClassTypeId(), logger);
}

AbstractEventRequest::~AbstractEventRequest() = default;

bool AbstractEventRequest::addFilter(AbstractEventFilter* filter) {
  // Requests without filters refuse every one, and own it all the same.
  allocator::Owned<AbstractEventFilter> refused(filter);
  return false;
}

void AbstractEventRequest::update() {}

void AbstractEventRequest::accept(AbstractEventRequestVisitor& visitor) { visitor.visit(*this); }

void AbstractEventRequest::registerListener(AbstractEventListener& listener) {
  if (std::find(listeners_.begin(), listeners_.end(), &listener) == listeners_.end()) listeners_.push_back(&listener);
}

void AbstractEventRequest::unregisterListener(AbstractEventListener& listener) {
  listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), &listener), listeners_.end());
}

}  // namespace nox::utils::debugger
