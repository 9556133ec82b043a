// A subscription to one kind of event: a handle (issued by the RequestRegistry), the
// listeners to call, and, for the kinds that take them, filters that decide whether an
// event concerns the request. The engines report events by visiting the registry with
// a request visitor of the matching kind (BreakpointRequestVisitor...), which picks the
// requests of its kind by type id and evaluates them.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/StaticObject.h>

#include <cstdint>

namespace nox::utils::debugger {

class AbstractEventFilter;
class AbstractEventListener;
class AbstractEventRequestVisitor;

// The kinds of event, with the codes and names clients use for them.
namespace event {
enum Kind : std::int32_t {
  initialization = 0,
  termination = 1,
  disconnection = 2,
  suspension = 3,
  registration = 4,
  unregistration = 5,
  breakpoint = 6,
};
}  // namespace event

// "initialization", "termination", "disconnection", "suspension", "registration",
// "unregistration" or "breakpoint"; null for a code outside 0..6.
NOX_UTILS_API const char* getEventKindName(std::int32_t kind);
// The code of a kind name (exact, case-sensitive match), -1 for any other text.
NOX_UTILS_API std::int32_t findEventKind(const char* name, unsigned int length);

class NOX_UTILS_API AbstractEventRequest : public StaticObject {
  NOX_STATIC_OBJECT("nox::utils::debugger::AbstractEventRequest", "460047f0-ab06-4119-a200-6e13a96311a7",
                    &AbstractEventRequest::declareMetadata)
 public:
  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  explicit AbstractEventRequest(unsigned int handle) : handle_(handle) {}
  ~AbstractEventRequest() override;

  AbstractEventRequest(const AbstractEventRequest&) = delete;
  AbstractEventRequest& operator=(const AbstractEventRequest&) = delete;

  // Takes ownership of `filter` (made with new or NOX_NEW) whatever the answer: a
  // refused filter is destroyed at once. A null filter is refused. The base refuses every filter.
  virtual bool addFilter(AbstractEventFilter* filter);
  virtual void update();
  // Double dispatch: hands the request to the visitor, which keeps it only if it is of
  // the visitor's kind.
  virtual void accept(AbstractEventRequestVisitor& visitor);

  unsigned int getHandle() const { return handle_; }

  // Listeners are not owned. Registering one twice keeps one entry.
  void registerListener(AbstractEventListener& listener);
  void unregisterListener(AbstractEventListener& listener);

 protected:
  // Calls `call(listener)` for each listener in registration order. A listener may
  // unregister itself from inside the call.
  template <class Call>
  void forEachListener(Call call) const {
    for (std::size_t i = 0; i < listeners_.size(); ++i) {
      AbstractEventListener* listener = listeners_[i];
      call(*listener);
      if (i < listeners_.size() && listeners_[i] != listener) --i;
    }
  }

 private:
  unsigned int handle_;
  Vector<AbstractEventListener*> listeners_;
};

}  // namespace nox::utils::debugger
