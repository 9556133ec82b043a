// The debugger's cost on the engine thread when nobody is debugging: one context push
// and pop through the facade, with the debugger enabled and no stop condition set,
// against one uncontended recursive mutex lock/unlock pair.
#include <nox/utils/StringTable.h>
#include <nox/utils/debugger/AbstractContextFactory.h>
#include <nox/utils/debugger/AbstractEngine.h>
#include <nox/utils/debugger/EngineDebuggerFacade.h>
#include <nox/utils/debugger/MainContext.h>
#include <nox/utils/debugger/impl/InspectionFrameworkImpl.h>

#include <benchmark/benchmark.h>

#include <mutex>

#include "support/Ratios.h"

namespace {

using namespace nox::utils::debugger;

class BenchEngine : public AbstractEngine {
 public:
  BenchEngine() : AbstractEngine("bench", true) {}
};

// Hands out a context the engine keeps: no allocation per push.
struct KeptContextFactory : AbstractContextFactory {
  AbstractContext* createContext() override { return &context; }
  MainContext context;
};

void BM_DebuggerPushPop(benchmark::State& state) {
  nox::utils::StringTable strings;
  impl::InspectionFrameworkImpl framework(strings, nullptr);
  BenchEngine engine;
  framework.registerEngine(engine, nullptr);
  const unsigned int entities[] = {1, 2, 3, 4};
  engine.onEntitiesRegistration(entities, 4);
  KeptContextFactory factory;
  EngineDebuggerFacade& facade = framework.getFacade();
  facade.pushContext(engine, 3, factory);
  for (auto _ : state) {
    facade.pushContext(engine, 3, factory);
    benchmark::DoNotOptimize(facade.popContext(engine, 3));
  }
  facade.popContext(engine, 3);
  framework.unregisterEngine("bench", nullptr);
}
BENCHMARK(BM_DebuggerPushPop);

void BM_RecursiveMutexPair(benchmark::State& state) {
  std::recursive_mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    benchmark::ClobberMemory();
    mutex.unlock();
  }
}
BENCHMARK(BM_RecursiveMutexPair);

NOX_BENCH_RATIO("context push + pop with no stop condition, vs a recursive mutex pair", "BM_DebuggerPushPop",
                "BM_RecursiveMutexPair", 2.0);

}  // namespace
