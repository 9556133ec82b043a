// A table of creators keyed by name: the event framework makes the filters of a
// subscription by looking up each filter name ("entities", "location", "hitcount"...)
// here. Hosts may register creators of their own names.
#pragma once

#include <nox/allocator/Owned.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Containers.h>
#include <nox/utils/ErrorType.h>
#include <nox/utils/String.h>

#include <functional>
#include <string_view>
#include <utility>

namespace nox::utils::debugger {

template <class Creator>
class CreatorAbstractFactory {
 public:
  CreatorAbstractFactory() = default;
  ~CreatorAbstractFactory() { clear(); }

  CreatorAbstractFactory(const CreatorAbstractFactory&) = delete;
  CreatorAbstractFactory& operator=(const CreatorAbstractFactory&) = delete;

  // Takes ownership of `creator` (made with new or NOX_NEW) whatever the answer: a refused
  // creator is destroyed at once.
  bool registerCreator(const char* name, Creator* creator, AbstractLogger* logger) {
    allocator::Owned<Creator> owned(creator);
    if (name == nullptr || owned == nullptr) {
      NOX_LOG_ERROR(logger, error::invalidArgument, "A creator needs a name and an instance.");
      return false;
    }
    if (creators_.count(std::string_view(name)) != 0) {
      NOX_LOG_ERROR(logger, error::invalidArgument, "A creator is already registered for " << name);
      return false;
    }
    creators_.emplace(String(name), std::move(owned));
    return true;
  }

  // Destroys the creator; false when none has that name.
  bool unregisterCreator(const char* name) {
    auto found = name != nullptr ? creators_.find(std::string_view(name)) : creators_.end();
    if (found == creators_.end()) return false;
    creators_.erase(found);
    return true;
  }

  // Null when no creator has that name.
  const Creator* findCreator(const char* name, unsigned int length) const {
    auto found = creators_.find(std::string_view(name, length));
    return found != creators_.end() ? found->second.get() : nullptr;
  }

  void clear() { creators_.clear(); }

 private:
  Map<String, allocator::Owned<Creator>, std::less<>> creators_;
};

}  // namespace nox::utils::debugger
