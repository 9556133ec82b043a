#include <nox/utils/debugger/EventFilterList.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/debugger/AbstractEventFilter.h>

namespace nox::utils::debugger {

EventFilterList::~EventFilterList() {
  for (AbstractEventFilter* filter : filters_) NOX_DELETE(filter);
}

bool EventFilterList::add(AbstractEventFilter* filter) {
  if (filter == nullptr) return false;
  filters_.push_back(filter);
  return true;
}

void EventFilterList::updateAll() {
  for (AbstractEventFilter* filter : filters_) filter->update();
}

void EventFilterList::acceptAll(AbstractEventFilterVisitor& first) const {
  for (const AbstractEventFilter* filter : filters_) filter->accept(first);
}

void EventFilterList::acceptAll(AbstractEventFilterVisitor& first, AbstractEventFilterVisitor& second,
                                AbstractEventFilterVisitor& third) const {
  for (const AbstractEventFilter* filter : filters_) {
    filter->accept(first);
    filter->accept(second);
    filter->accept(third);
  }
}

}  // namespace nox::utils::debugger
