// Makes one kind of event filter from its value in a subscription's "filters" object.
// Registered by name in the framework's CreatorAbstractFactory.
//
// A creator reads values of one kind (getValueType). A value of another kind makes no
// filter and the subscription goes on without it; a value of the right kind from which
// create() cannot make a filter (a "location" that is no URI) refuses the whole
// subscription, which would otherwise catch more than the client asked for.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/Type.h>

namespace nox::utils {
class AbstractLogger;
class DynamicObject;
}  // namespace nox::utils

namespace nox::utils::debugger {

class AbstractEventFilter;

class NOX_UTILS_API AbstractEventFilterCreator {
 public:
  virtual ~AbstractEventFilterCreator();
  // The kind of value the filter is made from; type::null (the default) takes any kind.
  virtual type::Type getValueType() const;
  // A new filter (NOX_NEW) from the value at `property` of `data`; null when the value
  // does not have the form the filter needs.
  virtual AbstractEventFilter* create(const DynamicObject& data, unsigned int property,
                                      AbstractLogger* logger) const = 0;
};

}  // namespace nox::utils::debugger
