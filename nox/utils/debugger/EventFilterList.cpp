#include <nox/utils/debugger/EventFilterList.h>

#include <nox/utils/debugger/AbstractEventFilter.h>

#include <utility>

namespace nox::utils::debugger {

EventFilterList::EventFilterList() = default;

EventFilterList::~EventFilterList() = default;

bool EventFilterList::add(allocator::Owned<AbstractEventFilter> filter) {
  if (filter == nullptr) return false;
  filters_.push_back(std::move(filter));
  return true;
}

Vector<AbstractEventFilter*> EventFilterList::get() const {
  Vector<AbstractEventFilter*> filters;
  for (const auto& filter : filters_) filters.push_back(filter.get());
  return filters;
}

void EventFilterList::updateAll() {
  for (const auto& filter : filters_) filter->update();
}

void EventFilterList::acceptAll(AbstractEventFilterVisitor& first) const {
  for (const auto& filter : filters_) filter->accept(first);
}

void EventFilterList::acceptAll(AbstractEventFilterVisitor& first, AbstractEventFilterVisitor& second,
                                AbstractEventFilterVisitor& third) const {
  for (const auto& filter : filters_) {
    filter->accept(first);
    filter->accept(second);
    filter->accept(third);
  }
}

}  // namespace nox::utils::debugger
