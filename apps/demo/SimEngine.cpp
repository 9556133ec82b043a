#include "SimEngine.h"

#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/PathCursor.h>
#include <nox/utils/Property.h>
#include <nox/utils/RandomManager.h>
#include <nox/utils/ScopedMutex.h>
#include <nox/utils/Thread.h>
#include <nox/utils/Time.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/DebuggerFramework.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/InspectionFramework.h>

#include <cmath>
#include <cstring>
#include <string>

namespace nox::demo {

namespace debugger = nox::utils::debugger;
using nox::utils::AbstractLogger;
using nox::utils::AbstractObjectBuilder;
using nox::utils::DynamicObject;
using nox::utils::PathCursor;
using nox::utils::ScopedMutex;
using nox::utils::TypeManager;
using nox::utils::Uri;

namespace {

constexpr double tiredEnergy = 20.0;
constexpr double restedEnergy = 60.0;
constexpr double speed = 1.5;

// Hands the debugger a context the engine keeps, refreshed as the frame is entered.
class CapturingFactory : public debugger::AbstractContextFactory {
 public:
  CapturingFactory(AgentContext& context, const Agent& agent) : context_(context), agent_(agent) {}
  debugger::AbstractContext* createContext() override {
    context_.capture(agent_);
    return &context_;
  }

 private:
  AgentContext& context_;
  const Agent& agent_;
};

// The agent's reflected properties as the members of `object`'s property `handle`.
bool putAgent(const Agent& agent, DynamicObject& object, unsigned int handle, AbstractLogger* logger) {
  const TypeManager& types = nox::utils::Facilities::instance().getTypeManager();
  const nox::utils::Uuid& type = Agent::getClassTypeId();
  for (unsigned int i = 0, count = types.countProperties(type); i < count; ++i) {
    const nox::utils::Property& property = types.getProperty(type, i);
    if (!property.putValue(agent, object, object.addChild(handle, property.getKey()), logger)) return false;
  }
  return true;
}

}  // namespace

// ---- Agent and its frames.

bool Agent::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), StaticObject::getClassTypeId(), logger) &&
         types.registerProperty<Agent>("id", &Agent::id, &Agent::id, logger) &&
         types.registerProperty<Agent>("name", &Agent::name, &Agent::name, logger) &&
         types.registerProperty<Agent>("position", &Agent::position, &Agent::position, logger) &&
         types.registerProperty<Agent>("heading", &Agent::heading, &Agent::heading, logger) &&
         types.registerProperty<Agent>("energy", &Agent::energy, &Agent::energy, logger) &&
         types.registerProperty<Agent>("activity", &Agent::activity, &Agent::activity, logger);
}

bool AgentContext::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), debugger::AbstractContext::getClassTypeId(), logger);
}

AgentContext::AgentContext(int agent, const char* phase) : agent_(agent), phase_(phase) {
  std::string text = "sim:agents/" + std::to_string(agent);
  if (*phase != '\0') text += std::string("/") + phase;
  location_ = Uri::create(text.c_str());
}

void AgentContext::capture(const Agent& agent) { snapshot_ = agent; }

bool AgentContext::serialize(AbstractObjectBuilder& out) const {
  char* location = location_.computeString();
  const bool written = out.beginObject() && out.objectChild("location") && out.string(location) &&
                       out.objectChild("agent") && out.integer(agent_) && out.objectChild("phase") &&
                       out.string(*phase_ != '\0' ? phase_ : "agent") && out.objectChild("activity") &&
                       out.string(snapshot_.activity.c_str()) && out.objectChild("energy") &&
                       out.real(snapshot_.energy) && out.objectChild("position") && out.beginObject() &&
                       out.objectChild("x") && out.real(snapshot_.position.x) && out.objectChild("y") &&
                       out.real(snapshot_.position.y) && out.endObject() && out.endObject();
  NOX_DEALLOCATE(location);
  return written;
}

// ---- The engine.

SimEngine::SimEngine(unsigned int agents, unsigned int tickMilliseconds, std::uint64_t ticks,
                     std::function<void()> onFinished)
    : AbstractEngine("sim", true),
      tickMilliseconds_(tickMilliseconds),
      ticks_(ticks),
      onFinished_(std::move(onFinished)) {
  const nox::utils::RandomManager& random = nox::utils::Facilities::instance().getRandomNumberGenerator();
  for (unsigned int i = 0; i < agents; ++i) {
    const int id = static_cast<int>(i + 1);
    actors_.push_back(std::unique_ptr<Actor>(new Actor{Agent(), random.createRandomStream(id), AgentContext(id, ""),
                                                       AgentContext(id, "think"), AgentContext(id, "move")}));
    Agent& agent = actors_.back()->agent;
    agent.id = id;
    agent.name = ("agent-" + std::to_string(id)).c_str();
    agent.position = {10.0 * id, 0.0};
    entities_.push_back(static_cast<unsigned int>(id));
  }
}

SimEngine::~SimEngine() { stop(); }

bool SimEngine::registerTypes(TypeManager& types, AbstractLogger* logger) {
  return types.registerStaticObjectType<Agent>(logger) && types.registerStaticObjectType<AgentContext>(logger);
}

bool SimEngine::start() {
  if (getFacade() == nullptr || thread_) return false;
  onEntitiesRegistration(entities_.data(), static_cast<unsigned int>(entities_.size()));
  thread_.reset(new nox::utils::Thread(&SimEngine::run, this));
  return true;
}

void SimEngine::stop() {
  if (!thread_) return;
  stopping_ = true;
  thread_->join(nullptr);
  thread_.reset();
  onEntitiesUnregistration(entities_.data(), static_cast<unsigned int>(entities_.size()));
}

void* SimEngine::run(void* self) {
  SimEngine& engine = *static_cast<SimEngine*>(self);
  while (!engine.stopping_ && (engine.ticks_ == 0 || engine.ticksDone_ < engine.ticks_)) {
    engine.tick();
    nox::utils::sleep(nox::utils::Time(engine.tickMilliseconds_ / 1000.0));
  }
  if (!engine.stopping_ && engine.onFinished_) engine.onFinished_();
  return nullptr;
}

void SimEngine::tick() {
  for (const std::unique_ptr<Actor>& actor : actors_) {
    if (stopping_) return;
    stepAgent(*actor);
  }
  ++ticksDone_;
}

void SimEngine::stepAgent(Actor& actor) {
  Agent& agent = actor.agent;
  enter(actor, actor.frame);

  enter(actor, actor.think);
  {
    ScopedMutex lock(stateMutex_);
    if (agent.energy < tiredEnergy || (agent.activity == "resting" && agent.energy < restedEnergy)) {
      agent.activity = "resting";
    } else {
      agent.activity = "moving";
      // A turn of up to a quarter of a radian either way.
      agent.heading += (static_cast<int>(actor.random(101)) - 50) / 200.0;
    }
  }
  leave(actor);

  enter(actor, actor.move);
  {
    ScopedMutex lock(stateMutex_);
    if (agent.activity == "moving") {
      agent.position.x += speed * std::cos(agent.heading);
      agent.position.y += speed * std::sin(agent.heading);
      agent.energy -= 1.0 + actor.random(3);
    } else {
      agent.energy += 5.0;
    }
  }
  leave(actor);

  leave(actor);
}

void SimEngine::enter(Actor& actor, AgentContext& context) {
  debugger::EngineDebuggerFacade& facade = *getFacade();
  const unsigned int entity = static_cast<unsigned int>(actor.agent.id);
  facade.checkBreakpoints(entity, context.getLocation());
  CapturingFactory factory(context, actor.agent);
  facade.pushContext(*this, entity, factory);
}

void SimEngine::leave(Actor& actor) { getFacade()->popContext(*this, static_cast<unsigned int>(actor.agent.id)); }

// ---- Resources.

debugger::resources::Status SimEngine::retrieveResource(const char* path, unsigned int length, const DynamicObject&,
                                                        AbstractObjectBuilder& reply) {
  DynamicObject object;
  const unsigned int root = object.getRoot();
  PathCursor cursor(path, length);
  if (!cursor.next()) {
    object.setInt(object.addChild(root, "agents"), static_cast<std::int64_t>(actors_.size()));
    object.setInt(object.addChild(root, "ticks"), static_cast<std::int64_t>(ticksDone_.load()));
    object.setInt(object.addChild(root, "tickMs"), tickMilliseconds_);
  } else {
    if (!cursor.is("agents")) return debugger::resources::unknown;
    // "agents" lists them all, "agents/<id>" names one.
    unsigned int id = 0;
    const bool one = !cursor.done();
    if (one && (!cursor.nextUnsigned(id) || !cursor.done())) return debugger::resources::unknown;
    if (!writeAgents(object, one ? &id : nullptr)) return debugger::resources::unknown;
  }
  return nox::utils::serializeDynamicObject(object, reply) ? debugger::resources::done : debugger::resources::error;
}

bool SimEngine::writeAgents(DynamicObject& reply, const unsigned int* only) const {
  AbstractLogger* logger = getFacade() != nullptr ? getFacade()->getLogger() : nullptr;
  ScopedMutex lock(stateMutex_);
  if (only != nullptr) {
    if (*only < 1 || static_cast<std::size_t>(*only) > actors_.size()) return false;
    return putAgent(actors_[*only - 1]->agent, reply, reply.getRoot(), logger);
  }
  reply.resize(reply.getRoot(), static_cast<unsigned int>(actors_.size()));
  for (std::size_t i = 0; i < actors_.size(); ++i) {
    if (!putAgent(actors_[i]->agent, reply, reply.getChild(reply.getRoot(), static_cast<unsigned int>(i)), logger)) {
      return false;
    }
  }
  return true;
}

}  // namespace nox::demo
