#include <nox/utils/debugger/DebuggerFramework.h>

#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/PathCursor.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/Entity.h>
#include <nox/utils/debugger/EntityStacks.h>
#include <nox/utils/debugger/FrameworkMutex.h>
#include <nox/utils/debugger/impl/Replies.h>

#include <limits>

namespace nox::utils::debugger {

using impl::reply;
using impl::replyNull;

DebuggerFramework::DebuggerFramework(EntityStacks& stacks)
    : AbstractEngine("debug", true), stacks_(stacks), controller_(stacks.getExecutionController()) {
  stacks_.setDebugger(this);
}

DebuggerFramework::~DebuggerFramework() { stacks_.setDebugger(nullptr); }

AbstractLogger* DebuggerFramework::getLogger() const {
  return getFacade() != nullptr ? getFacade()->getLogger() : nullptr;
}

unsigned int DebuggerFramework::countEntities() const { return stacks_.countEntities(); }

Vector<unsigned int> DebuggerFramework::getEntities() const { return stacks_.getEntities(); }

unsigned int DebuggerFramework::countContexts(unsigned int entity) const { return stacks_.countContexts(entity); }

AbstractContext* DebuggerFramework::getContext(unsigned int entity, unsigned int index, AbstractLogger* logger) const {
  return stacks_.getContext(entity, index, logger);
}

bool DebuggerFramework::isSuspended() const { return controller_.isSuspended(); }

unsigned int DebuggerFramework::getSuspendedEntity() const {
  FrameworkMutex::ScopedLocker lock(stacks_.getMutex());
  return controller_.isSuspended() ? stacks_.getSteppingState().suspendedEntity : invalidEntity;
}

// ---- Commands. Each runs under the framework mutex, so no step check and no other
// command interleaves; only the engine thread's own wake-up is asynchronous.

// A step check that decided to stop holds the execution controls until the engine thread
// is suspended: taking them waits for that, so a command never takes an engine about to
// stop for a running one.
bool DebuggerFramework::isSuspendedSettled() {
  ExecutionController::ScopedControlLocker settle(controller_);
  return controller_.isSuspended();
}

bool DebuggerFramework::suspend() {
  FrameworkMutex::ScopedLocker lock(stacks_.getMutex());
  if (isSuspendedSettled()) return false;
  EntityStacks::SteppingState& stepping = stacks_.getSteppingState();
  stepping.reset();
  stepping.suspendAll = true;
  return true;
}

bool DebuggerFramework::suspendEntity(unsigned int entity) {
  FrameworkMutex::ScopedLocker lock(stacks_.getMutex());
  if (isSuspendedSettled() || entity == invalidEntity || !stacks_.isEntityRegistered(entity)) return false;
  EntityStacks::SteppingState& stepping = stacks_.getSteppingState();
  stepping.reset();
  stepping.entitiesToSuspend.insert(entity);
  return true;
}

bool DebuggerFramework::resume() {
  FrameworkMutex::ScopedLocker lock(stacks_.getMutex());
  const bool wasSuspended = isSuspendedSettled();
  stacks_.getSteppingState().reset();
  controller_.resume();
  return wasSuspended;
}

template <class SetConditions>
bool DebuggerFramework::resumeStepping(SetConditions setConditions) {
  FrameworkMutex::ScopedLocker lock(stacks_.getMutex());
  if (!isSuspendedSettled()) return false;
  EntityStacks::SteppingState& stepping = stacks_.getSteppingState();
  stepping.reset();
  setConditions(stepping);
  controller_.resume();
  return true;
}

// A step over stops when the top frame is on top again (what it calls has returned), a
// step out when the frame below it is. A stack too shallow gives no frame, and the step is
// then a plain resume: there is nothing to return to.
const AbstractContext* DebuggerFramework::frameBelowTop(unsigned int entity, unsigned int framesBelowTop) {
  const unsigned int depth = stacks_.countContexts(entity);
  return depth > framesBelowTop ? stacks_.getContext(entity, depth - 1 - framesBelowTop, nullptr) : nullptr;
}

bool DebuggerFramework::stepIn() {
  return resumeStepping([](auto& stepping) { stepping.entitiesToSuspend.insert(stepping.suspendedEntity); });
}

bool DebuggerFramework::stepOver() {
  return resumeStepping([this](auto& stepping) {
    stepping.stepOverTarget = frameBelowTop(stepping.suspendedEntity, 0);
    stepping.targetEntity = stepping.suspendedEntity;
  });
}

bool DebuggerFramework::stepOut() {
  return resumeStepping([this](auto& stepping) {
    stepping.stepOutTarget = frameBelowTop(stepping.suspendedEntity, 1);
    stepping.targetEntity = stepping.suspendedEntity;
  });
}

void DebuggerFramework::doDisable(bool& enabled) {
  FrameworkMutex::ScopedLocker lock(stacks_.getMutex());
  // The flag first: the engine thread, once woken, must not meet a stop again.
  AbstractEngine::doDisable(enabled);
  resume();
}

// ---- Resources.
//
// Fixed words of a path ("entities", "contexts", "suspend"...) match a whole segment
// exactly: "suspended" or "entitiesX" name nothing, as clients expect, where a prefix
// comparison over the segment's length would take them for the word.
//
// A client names entities and contexts in its paths, and a client's request is outside
// input: an entity that is not registered, or a context index past the top of its stack,
// is a warning ("No entity #" + id, "No context for entity #" + id + " at index " +
// index) and the resource is unknown (404 over HTTP), never an assertion. An engine's
// own code that breaks the contract (a push for an unregistered entity, a pop from an
// empty stack) still meets the assertions of the framework.

resources::Status DebuggerFramework::retrieveResource(const char* path, unsigned int length, const DynamicObject&,
                                                      AbstractObjectBuilder& builder) {
  // Resource calls arrive under the framework mutex; taking it again keeps direct
  // callers consistent too (the stacks must not move while they are written).
  FrameworkMutex::ScopedLocker lock(stacks_.getMutex());
  PathCursor cursor(path, length);
  if (!cursor.next()) {
    return reply(builder, [](AbstractObjectBuilder& out) {
      return out.beginObject() && out.objectChild("name") && out.string("default") && out.objectChild("description") &&
             out.string("") && out.endObject();
    });
  }
  if (cursor.is("entities")) return retrieveEntityResource(cursor, builder);
  if (cursor.done() && (cursor.is("suspend") || cursor.is("resume"))) {
    return reply(builder, [this](AbstractObjectBuilder& out) { return writeSuspension(out); });
  }
  return resources::unknown;
}

// A selector that is there but cannot name an entity refuses the command: falling back
// to "suspend every entity" would stop what the client did not ask to stop.
bool DebuggerFramework::readSelectedEntity(const DynamicObject& request, unsigned int& entity) const {
  const unsigned int property = request.getType(request.getRoot()) == type::object ? request.getProperty("entity") : 0;
  if (property == 0) return true;
  const std::int64_t value = request.getType(property) == type::integer ? request.getInt(property) : -1;
  if (value < 0 || value > std::numeric_limits<unsigned int>::max()) {
    NOX_LOG_WARNING(getLogger(), "The \"entity\" of a suspend command must be an entity id.");
    return false;
  }
  entity = static_cast<unsigned int>(value);
  return true;
}

bool DebuggerFramework::writeSuspension(AbstractObjectBuilder& out) {
  // Keeps suspend and resume still, so that both members describe one moment.
  ExecutionController::ScopedControlLocker controls(controller_);
  const bool suspended = controller_.isSuspended();
  const unsigned int entity = suspended ? stacks_.getSteppingState().suspendedEntity : invalidEntity;
  return out.beginObject() && out.objectChild("suspended") && out.boolean(suspended) && out.objectChild("entity") &&
         out.integer(entity) && out.endObject();
}

// `cursor` stands on "entities".
resources::Status DebuggerFramework::retrieveEntityResource(PathCursor& cursor, AbstractObjectBuilder& builder) {
  if (cursor.done()) {
    const Vector<unsigned int> entities = stacks_.getEntities();
    return reply(builder, [&entities](AbstractObjectBuilder& out) {
      bool written = out.beginArray();
      for (unsigned int entity : entities) {
        written = written && out.arrayChild() && out.beginObject() && out.objectChild("index") && out.integer(entity) &&
                  out.endObject();
      }
      return written && out.endArray();
    });
  }
  unsigned int entity = 0;
  if (!cursor.nextUnsigned(entity)) return resources::unknown;
  if (!stacks_.isEntityRegistered(entity)) {
    NOX_LOG_WARNING(getLogger(), "No entity #" << entity);
    return resources::unknown;
  }
  // Below the entity: nothing, "contexts", or "contexts/<index>".
  if (!cursor.next()) {
    return reply(builder, [&](AbstractObjectBuilder& out) {
      return out.beginObject() && out.objectChild("contexts") && writeContextList(entity, out) && out.endObject();
    });
  }
  if (!cursor.is("contexts")) return resources::unknown;
  if (cursor.done()) return reply(builder, [&](AbstractObjectBuilder& out) { return writeContextList(entity, out); });
  unsigned int index = 0;
  if (!cursor.nextUnsigned(index) || !cursor.done()) return resources::unknown;
  const AbstractContext* context = index < stacks_.countContexts(entity) ? getContext(entity, index) : nullptr;
  if (context == nullptr) {
    NOX_LOG_WARNING(getLogger(), "No context for entity #" << entity << " at index " << index);
    return resources::unknown;
  }
  return reply(builder, [context](AbstractObjectBuilder& out) { return context->serialize(out); });
}

bool DebuggerFramework::writeContextList(unsigned int entity, AbstractObjectBuilder& out) const {
  bool written = out.beginArray();
  for (unsigned int index = 0, count = stacks_.countContexts(entity); written && index < count; ++index) {
    const AbstractContext* context = stacks_.getContext(entity, index, nullptr);
    written = out.arrayChild() && out.beginObject() && out.objectChild("index") && out.integer(index) &&
              out.objectChild("location") && impl::writeUri(out, context->getLocation()) && out.endObject();
  }
  return written && out.endArray();
}

resources::Status DebuggerFramework::createResource(const char* path, unsigned int length, const DynamicObject& request,
                                                    AbstractObjectBuilder& builder) {
  PathCursor cursor(path, length);
  if (!cursor.next() || !cursor.done()) return resources::unknown;
  return runCommand(cursor.segment(), request, builder);
}

resources::Status DebuggerFramework::runCommand(std::string_view command, const DynamicObject& request,
                                                AbstractObjectBuilder& builder) {
  bool accepted = false;
  if (command == "suspend") {
    unsigned int entity = invalidEntity;
    if (!readSelectedEntity(request, entity)) return resources::error;
    accepted = entity == invalidEntity ? suspend() : suspendEntity(entity);
  } else if (command == "resume") {
    accepted = resume();
  } else if (command == "stepin") {
    accepted = stepIn();
  } else if (command == "stepover") {
    accepted = stepOver();
  } else if (command == "stepout") {
    accepted = stepOut();
  } else {
    return resources::unknown;
  }
  return accepted ? replyNull(builder) : resources::error;
}

}  // namespace nox::utils::debugger
