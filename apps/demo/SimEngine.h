// The demo's engine, "sim": agents wandering on a plane, stepped by an engine thread.
//
// Each tick, each agent enters its frame (sim:agents/<id>), thinks in it
// (sim:agents/<id>/think: picks a heading, or rests when tired), then moves
// (sim:agents/<id>/move). Every frame is a context pushed on the agent's stack, so an
// inspection client sees where each agent is, and every push is a place where the
// engine can be stopped: by the debugger's commands, or by a breakpoint subscribed on
// the frame's location.
//
// The agents are reflected static objects, served as resources:
//   GET /api/sim                the simulation: agent count, ticks done, tick length
//   GET /api/sim/agents         every agent, with its reflected properties
//   GET /api/sim/agents/<id>    one agent
#pragma once

#include <nox/utils/Mutex.h>
#include <nox/utils/Random.h>
#include <nox/utils/StaticObject.h>
#include <nox/utils/String.h>
#include <nox/utils/Uri.h>
#include <nox/utils/Vector2.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractEngine.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace nox::utils {
class AbstractLogger;
class DynamicObject;
class Thread;
class TypeManager;
}  // namespace nox::utils

namespace nox::demo {

// One simulated agent, readable by clients through its reflected properties.
class Agent : public nox::utils::StaticObject {
  NOX_STATIC_OBJECT("nox::demo::Agent", "5e0c3c8e-2f7a-4b8e-9d61-3a1f6c2b7e90", &Agent::declareMetadata)
 public:
  static bool declareMetadata(nox::utils::TypeManager& types, nox::utils::AbstractLogger* logger);

  int id = 0;
  nox::utils::String name;
  nox::utils::Vector2r position{0.0, 0.0};
  double heading = 0.0;
  double energy = 100.0;
  nox::utils::String activity = "thinking";
};

// One frame of an agent: where it is (the location) and, as the frame was entered,
// the agent's position, energy and activity.
class AgentContext : public nox::utils::debugger::AbstractContext {
  NOX_STATIC_OBJECT("nox::demo::AgentContext", "9b47d2a6-61c5-4f0e-8a3b-d5e2c7f41a08", &AgentContext::declareMetadata)
 public:
  static bool declareMetadata(nox::utils::TypeManager& types, nox::utils::AbstractLogger* logger);

  // `phase` is "" for the agent's outer frame, else "think" or "move".
  AgentContext(int agent, const char* phase);

  // Takes the agent's values of the moment.
  void capture(const Agent& agent);

  const nox::utils::Uri& getLocation() const override { return location_; }
  bool serialize(nox::utils::AbstractObjectBuilder& builder) const override;

 private:
  int agent_;
  const char* phase_;
  nox::utils::Uri location_;
  Agent snapshot_;
};

class SimEngine : public nox::utils::debugger::AbstractEngine {
 public:
  // `ticks` 0 runs until stop(). `onFinished` is called on the engine thread when the
  // last tick is done.
  SimEngine(unsigned int agents, unsigned int tickMilliseconds, std::uint64_t ticks, std::function<void()> onFinished);
  ~SimEngine() override;

  // The agent and context types, with the type manager of the Facilities.
  static bool registerTypes(nox::utils::TypeManager& types, nox::utils::AbstractLogger* logger);

  // Registers the agents as entities and starts the engine thread. The engine must be
  // registered with the inspection framework.
  bool start();
  // Asks the thread to end after the current step and waits for it. A thread held by
  // the debugger ends only once resumed: disable the debugger first.
  void stop();

  nox::utils::debugger::resources::Status retrieveResource(const char* path, unsigned int length,
                                                           const nox::utils::DynamicObject& parameters,
                                                           nox::utils::AbstractObjectBuilder& reply) override;

 private:
  struct Actor {
    Agent agent;
    nox::utils::Random random;
    AgentContext frame;
    AgentContext think;
    AgentContext move;
  };

  static void* run(void* self);
  void tick();
  void stepAgent(Actor& actor);
  // Reports the step to the breakpoint requests, then pushes the context; a hit stops
  // the agent right there.
  void enter(Actor& actor, AgentContext& context);
  void leave(Actor& actor);
  bool writeAgents(nox::utils::DynamicObject& reply, const unsigned int* only) const;

  std::vector<std::unique_ptr<Actor>> actors_;
  std::vector<unsigned int> entities_;
  const unsigned int tickMilliseconds_;
  const std::uint64_t ticks_;
  std::function<void()> onFinished_;
  // Guards what clients read of the agents while the engine thread changes it.
  mutable nox::utils::Mutex stateMutex_;
  std::atomic<std::uint64_t> ticksDone_{0};
  std::atomic<bool> stopping_{false};
  std::unique_ptr<nox::utils::Thread> thread_;
};

}  // namespace nox::demo
