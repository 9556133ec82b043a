// A small inspection host for the HTTP server tests: the library initialised with a
// thread-safe recording logger, the inspection server on a free loopback port, and an
// engine ("sim") whose thread steps two entities through nested contexts, stopping at
// breakpoints the way an engine should. Tests wait for suspensions through a listener,
// never by sleeping.
#pragma once

#include "support/HttpClient.h"

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Facilities.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/AbstractContext.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/AbstractEventListener.h>
#include <nox/utils/debugger/AbstractEventRequest.h>
#include <nox/utils/debugger/DebuggerFramework.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/FrameworkMutex.h>
#include <nox/utils/debugger/InspectionFramework.h>
#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace nox::test {

namespace debugger = nox::utils::debugger;

// Records every report under a mutex: the HTTP and engine threads log concurrently.
class RecordingLogger : public nox::utils::AbstractLogger {
 public:
  struct Entry {
    char kind;
    std::string message;
  };

  explicit RecordingLogger(bool traces = false) : AbstractLogger(true, true, traces) {}

  std::vector<Entry> entries() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return entries_;
  }
  std::vector<std::string> messages(char kind) const {
    std::vector<std::string> result;
    for (const Entry& entry : entries()) {
      if (entry.kind == kind) result.push_back(entry.message);
    }
    return result;
  }
  void clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
  }

 protected:
  void doLogTrace(const char*, unsigned int, const char* message) override { record('t', message); }
  void doLogInfo(const char*, unsigned int, const char* message) override { record('i', message); }
  void doLogWarning(const char*, unsigned int, const char* message) override { record('w', message); }
  void doLogError(const nox::utils::ErrorType&, const char*, unsigned int, const char* message) override {
    record('e', message);
  }

 private:
  void record(char kind, const char* message) {
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.push_back({kind, message});
  }

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

// A context at a fixed location; it shows its location and entity.
class TestContext : public debugger::AbstractContext {
 public:
  TestContext(unsigned int entity, const std::string& location)
      : entity_(entity), location_(nox::utils::Uri::create(location.c_str())) {}

  const nox::utils::Uri& getLocation() const override { return location_; }
  bool serialize(nox::utils::AbstractObjectBuilder& out) const override {
    char* text = location_.computeString();
    const bool written = out.beginObject() && out.objectChild("location") && out.string(text) &&
                         out.objectChild("entity") && out.integer(entity_) && out.endObject();
    NOX_DEALLOCATE(text);
    return written;
  }

 private:
  unsigned int entity_;
  nox::utils::Uri location_;
};

// Counts suspensions (the step check tells the suspension requests before blocking).
class SuspensionWaiter : public debugger::AbstractEventListener {
 public:
  explicit SuspensionWaiter(debugger::InspectionFramework& framework) : framework_(framework) {
    debugger::AbstractEventListener* listener = this;
    handle_ = framework.getImplementation().getRequestRegistry().subscribe(debugger::event::suspension, &listener, 1,
                                                                           nullptr, 0);
  }
  ~SuspensionWaiter() override { framework_.unsubscribe(handle_); }

  void onTargetSuspension(unsigned int, unsigned int entity) override {
    std::lock_guard<std::mutex> lock(mutex_);
    ++count_;
    lastEntity_ = entity;
    changed_.notify_all();
  }

  int count() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return count_;
  }
  // Waits until `count` suspensions happened in all and the engine thread blocks in
  // the last one; false after a generous time-out (a failing test must not hang).
  bool waitFor(int count) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!changed_.wait_for(lock, std::chrono::seconds(20), [&] { return count_ >= count; })) return false;
    lock.unlock();
    // A stop is announced under the framework mutex, before the engine thread takes the
    // execution controls, which it holds until it blocks.
    { nox::utils::debugger::FrameworkMutex::ScopedLocker announced(framework_.getImplementation().getMutex()); }
    debugger::ExecutionController& controller = framework_.getDebugger().getExecutionController();
    debugger::ExecutionController::ScopedControlLocker controls(controller);
    return controller.isSuspended();
  }
  unsigned int lastEntity() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lastEntity_;
  }

 private:
  debugger::InspectionFramework& framework_;
  unsigned int handle_ = 0;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  int count_ = 0;
  unsigned int lastEntity_ = debugger::invalidEntity;
};

// Steps entities 1 and 2, each step pushing sim:agents/<id>, then in it
// sim:agents/<id>/think and sim:agents/<id>/move one after the other. Before each push it
// reports the location to the breakpoint requests and, on a hit, asks the debugger to
// stop the entity there.
class SteppingEngine : public debugger::AbstractEngine {
 public:
  SteppingEngine() : AbstractEngine("sim", true) {
    for (unsigned int entity : entities_) {
      const std::string base = "sim:agents/" + std::to_string(entity);
      frames_.push_back(std::make_unique<TestContext>(entity, base));
      frames_.push_back(std::make_unique<TestContext>(entity, base + "/think"));
      frames_.push_back(std::make_unique<TestContext>(entity, base + "/move"));
    }
  }
  ~SteppingEngine() override { stop(); }

  void start() {
    onEntitiesRegistration(entities_, 2);
    thread_ = std::thread([this] { run(); });
  }
  // False when the thread did not finish in time (left suspended, say); it is then
  // abandoned, so that the failing test ends instead of hanging.
  bool stop() {
    if (!thread_.joinable()) return true;
    stopping_ = true;
    std::unique_lock<std::mutex> lock(mutex_);
    if (!done_.wait_for(lock, std::chrono::seconds(20), [this] { return finished_; })) {
      thread_.detach();
      return false;
    }
    lock.unlock();
    thread_.join();
    onEntitiesUnregistration(entities_, 2);
    return true;
  }

 private:
  class Factory : public debugger::AbstractContextFactory {
   public:
    explicit Factory(TestContext& context) : context_(context) {}
    debugger::AbstractContext* createContext() override { return &context_; }

   private:
    TestContext& context_;
  };

  void push(unsigned int entity, TestContext& context) {
    getFacade()->checkBreakpoints(entity, context.getLocation());
    Factory factory(context);
    getFacade()->pushContext(*this, entity, factory);
  }

  void run() {
    while (!stopping_) {
      for (unsigned int i = 0; i < 2; ++i) {
        const unsigned int entity = entities_[i];
        push(entity, *frames_[3 * i]);
        push(entity, *frames_[3 * i + 1]);
        getFacade()->popContext(*this, entity);
        push(entity, *frames_[3 * i + 2]);
        getFacade()->popContext(*this, entity);
        getFacade()->popContext(*this, entity);
      }
      std::this_thread::yield();
    }
    std::lock_guard<std::mutex> lock(mutex_);
    finished_ = true;
    done_.notify_all();
  }

  const unsigned int entities_[2] = {1, 2};
  std::vector<std::unique_ptr<TestContext>> frames_;
  std::thread thread_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  std::condition_variable done_;
  bool finished_ = false;
};

// The library, the server on a free port, and optionally the stepping engine.
class InspectionHost {
 public:
  // The port form: one worker thread, every interface.
  InspectionHost() {
    setUp();
    std::mt19937 random(std::random_device{}());
    // Port 0 cannot be asked for through the port form: try random ports.
    for (int attempt = 0; attempt < 100 && !framework().isHttpStarted(); ++attempt) {
      framework().startHttp(static_cast<unsigned short>(20000 + random() % 40000));
    }
    logger.clear();
  }
  // The options form; the system chooses the port unless `options` names one.
  explicit InspectionHost(const debugger::HttpOptions& options) {
    setUp();
    framework().startHttp(options);
    logger.clear();
  }
  ~InspectionHost() {
    if (engine_) {
      // A disabled debugger resumes the engine and stops it nowhere any more.
      framework().disableEngine("debug");
      engine_->stop();
      framework().unregisterEngine("sim");
    }
    framework().shutdownHttp();
    nox::utils::terminate(nullptr);
  }

  debugger::InspectionFramework& framework() { return nox::utils::Facilities::instance().getInspectionFramework(); }
  unsigned short port() { return framework().getHttpPort(); }

  SteppingEngine& startEngine() {
    engine_ = std::make_unique<SteppingEngine>();
    framework().registerEngine(*engine_);
    engine_->start();
    return *engine_;
  }

  RecordingLogger logger;

 private:
  void setUp() {
    nox::utils::initialize(nullptr);
    nox::utils::Facilities::instance().setLogger(logger);
  }

  std::unique_ptr<SteppingEngine> engine_;
};

}  // namespace nox::test
