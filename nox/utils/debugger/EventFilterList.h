// The filters of a request that takes filters (breakpoints, suspensions), in the order
// added, owned: they are destroyed with the list. Requests of an engine's own kind may
// hold their filters in one too.
#pragma once

#include <nox/allocator/Owned.h>
#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>

namespace nox::utils::debugger {

class AbstractEventFilter;
class AbstractEventFilterVisitor;

class NOX_UTILS_API EventFilterList {
 public:
  // Both out of line: the filters' class is only declared here.
  EventFilterList();
  ~EventFilterList();

  EventFilterList(const EventFilterList&) = delete;
  EventFilterList& operator=(const EventFilterList&) = delete;

  // Null is refused.
  bool add(allocator::Owned<AbstractEventFilter> filter);
  void updateAll();
  // Offers every filter, in order, to each visitor.
  void acceptAll(AbstractEventFilterVisitor& first) const;
  void acceptAll(AbstractEventFilterVisitor& first, AbstractEventFilterVisitor& second,
                 AbstractEventFilterVisitor& third) const;

  // The filters, still owned by the list.
  Vector<AbstractEventFilter*> get() const;

 private:
  Vector<allocator::Owned<AbstractEventFilter>> filters_;
};

}  // namespace nox::utils::debugger
