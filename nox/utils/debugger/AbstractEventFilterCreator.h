// Makes one kind of event filter from its value in a subscription's "filters" object.
// Registered by name in the framework's CreatorAbstractFactory, which owns it: made with
// `new` or NOX_NEW, it is freed correctly either way (LibraryAllocated).
#pragma once

#include <nox/allocator/LibraryAllocated.h>
#include <nox/utils/Export.h>

namespace nox::utils {
class AbstractLogger;
class DynamicObject;
}  // namespace nox::utils

namespace nox::utils::debugger {

class AbstractEventFilter;

class NOX_UTILS_API AbstractEventFilterCreator : public nox::allocator::LibraryAllocated {
 public:
  virtual ~AbstractEventFilterCreator();
  // A new filter (new or NOX_NEW) from the value at `property` of `data`; null when the value
  // does not have the form the filter needs.
  virtual AbstractEventFilter* create(const DynamicObject& data, unsigned int property,
                                      AbstractLogger* logger) const = 0;
};

}  // namespace nox::utils::debugger
