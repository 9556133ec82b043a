// DynamicObject against RapidJSON and nlohmann::json doing the same work on the same
// data: 1 000 objects "a<i>" of 100 children "child<j>" holding, a third each, integers,
// reals and 4-12-byte strings (100 000 properties), built, looked up by path, iterated
// (with and without reading every value) and copied.
//
// Memory is reported per property: ours from the library allocator, the peers by
// counting their heap use (a global operator new for nlohmann, a counting base
// allocator under RapidJSON's memory pool).
#include <nox/allocator/Allocator.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/StringTable.h>
#include <nox/utils/details/SpareBlocks.h>

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "support/Ratios.h"

// ---- Heap counting for the peers. Each block carries its requested size in front,
// as the library allocator does, so both sides count requested bytes.

namespace {

std::atomic<std::int64_t> heapLiveBytes{0};
constexpr std::size_t heapHeaderSize = 16;

}  // namespace

void* operator new(std::size_t size) {
  void* raw = std::malloc(size + heapHeaderSize);
  if (raw == nullptr) throw std::bad_alloc();
  *static_cast<std::size_t*>(raw) = size;
  heapLiveBytes.fetch_add(static_cast<std::int64_t>(size), std::memory_order_relaxed);
  return static_cast<char*>(raw) + heapHeaderSize;
}

void operator delete(void* pointer) noexcept {
  if (pointer == nullptr) return;
  void* raw = static_cast<char*>(pointer) - heapHeaderSize;
  heapLiveBytes.fetch_sub(static_cast<std::int64_t>(*static_cast<std::size_t*>(raw)), std::memory_order_relaxed);
  std::free(raw);
}

void* operator new[](std::size_t size) { return ::operator new(size); }
void operator delete[](void* pointer) noexcept { ::operator delete(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { ::operator delete(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { ::operator delete(pointer); }

namespace {

using nox::utils::DynamicObject;
using nox::utils::DynamicObjectBuilder;
using nox::utils::DynamicObjectIterator;
namespace type = nox::utils::type;
using Json = nlohmann::json;

constexpr int objectCount = 1000;
constexpr int childCount = 100;
constexpr int propertyCount = objectCount * childCount;

// RapidJSON's default base allocator (malloc), counting what its memory pool takes.
class CountingCrtAllocator {
 public:
  static const bool kNeedFree = true;
  void* Malloc(std::size_t size) {
    if (size == 0) return nullptr;
    bytes += static_cast<std::int64_t>(size);
    return std::malloc(size);
  }
  void* Realloc(void* original, std::size_t originalSize, std::size_t newSize) {
    if (newSize == 0) {
      std::free(original);
      return nullptr;
    }
    bytes += static_cast<std::int64_t>(newSize) - static_cast<std::int64_t>(originalSize);
    return std::realloc(original, newSize);
  }
  static void Free(void* pointer) { std::free(pointer); }

  // Only read while one counted document is alive, so frees need not be subtracted.
  static std::int64_t bytes;
};
std::int64_t CountingCrtAllocator::bytes = 0;

using CountingDocument =
    rapidjson::GenericDocument<rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<CountingCrtAllocator>,
                               CountingCrtAllocator>;

// The shared data set.
struct Data {
  Data() {
    for (int i = 0; i < objectCount; ++i) objectNames.push_back("a" + std::to_string(i));
    for (int j = 0; j < childCount; ++j) {
      childNames.push_back("child" + std::to_string(j));
      texts.push_back(std::string(4 + j % 9, static_cast<char>('a' + j % 26)));
    }
    for (int i = 0; i < objectCount; ++i) {
      for (int j = 0; j < childCount; ++j) lookups.push_back({i, j, objectNames[i] + "." + childNames[j]});
    }
    std::shuffle(lookups.begin(), lookups.end(), std::mt19937(42));
  }

  // Children cycle through an integer, a real and a string.
  int kindOf(int child) const { return child % 3; }
  std::int64_t integerOf(int object, int child) const { return object * childCount + child; }
  double realOf(int object, int child) const { return (object * childCount + child) * 0.25; }

  struct Lookup {
    int object;
    int child;
    std::string path;
  };

  std::vector<std::string> objectNames;
  std::vector<std::string> childNames;
  std::vector<std::string> texts;
  std::vector<Lookup> lookups;
};

const Data& data() {
  static const Data instance;
  return instance;
}

// ---- Building.

void buildOurs(DynamicObject& object) {
  const Data& d = data();
  DynamicObjectBuilder builder(object, 0);
  builder.begin();
  builder.beginObject();
  for (int i = 0; i < objectCount; ++i) {
    builder.objectChild(d.objectNames[i].data(), static_cast<unsigned int>(d.objectNames[i].size()));
    builder.beginObject();
    for (int j = 0; j < childCount; ++j) {
      builder.objectChild(d.childNames[j].data(), static_cast<unsigned int>(d.childNames[j].size()));
      switch (d.kindOf(j)) {
        case 0:
          builder.integer(d.integerOf(i, j));
          break;
        case 1:
          builder.real(d.realOf(i, j));
          break;
        default:
          builder.string(d.texts[j].data(), static_cast<unsigned int>(d.texts[j].size()));
      }
    }
    builder.endObject();
  }
  builder.endObject();
  builder.end();
}

// What a program that builds by path does, each parent found once: the children are
// added to their parent's handle and set through theirs.
void buildOursByPath(DynamicObject& object) {
  const Data& d = data();
  for (int i = 0; i < objectCount; ++i) {
    const unsigned int parent =
        object.addChild(object.getRoot(), d.objectNames[i].data(), static_cast<unsigned int>(d.objectNames[i].size()));
    for (int j = 0; j < childCount; ++j) {
      const unsigned int child =
          object.addChild(parent, d.childNames[j].data(), static_cast<unsigned int>(d.childNames[j].size()));
      switch (d.kindOf(j)) {
        case 0:
          object.setInt(child, d.integerOf(i, j));
          break;
        case 1:
          object.setReal(child, d.realOf(i, j));
          break;
        default:
          object.setString(child, d.texts[j].data(), static_cast<unsigned int>(d.texts[j].size()));
      }
    }
  }
}

// The faster of nlohmann's natural forms: each parent is looked up once, not once per child.
void buildNlohmann(Json& root) {
  const Data& d = data();
  root = Json::object();
  for (int i = 0; i < objectCount; ++i) {
    Json& parent = root[d.objectNames[i]];
    for (int j = 0; j < childCount; ++j) {
      Json& child = parent[d.childNames[j]];
      switch (d.kindOf(j)) {
        case 0:
          child = d.integerOf(i, j);
          break;
        case 1:
          child = d.realOf(i, j);
          break;
        default:
          child = d.texts[j];
      }
    }
  }
}

template <class Document>
void buildRapidJson(Document& document) {
  const Data& d = data();
  auto& allocator = document.GetAllocator();
  using Value = rapidjson::GenericValue<rapidjson::UTF8<>, typename Document::AllocatorType>;
  document.SetObject();
  for (int i = 0; i < objectCount; ++i) {
    Value parent(rapidjson::kObjectType);
    for (int j = 0; j < childCount; ++j) {
      Value key(d.childNames[j].data(), static_cast<rapidjson::SizeType>(d.childNames[j].size()), allocator);
      Value value;
      switch (d.kindOf(j)) {
        case 0:
          value.SetInt64(d.integerOf(i, j));
          break;
        case 1:
          value.SetDouble(d.realOf(i, j));
          break;
        default:
          value.SetString(d.texts[j].data(), static_cast<rapidjson::SizeType>(d.texts[j].size()), allocator);
      }
      parent.AddMember(key, value, allocator);
    }
    Value key(d.objectNames[i].data(), static_cast<rapidjson::SizeType>(d.objectNames[i].size()), allocator);
    document.AddMember(key, parent, allocator);
  }
}

void setPerProperty(benchmark::State& state, const char* name, double total) {
  state.counters[name] = benchmark::Counter(total / propertyCount);
}

template <void (*build)(DynamicObject&)>
void measureOurBuild(benchmark::State& state) {
  nox::allocator::Allocator& allocator = nox::allocator::Allocator::instance();
  {
    // Blocks taken from the spare cache were counted live before the build.
    auto heldBytes = [&] { return allocator.liveBytes() - nox::utils::details::SpareBlocks::countBytes(); };
    std::uint64_t bytesBefore = heldBytes();
    std::uint64_t allocationsBefore = allocator.allocationCount();
    DynamicObject object;
    build(object);
    setPerProperty(state, "bytes/prop", static_cast<double>(heldBytes() - bytesBefore));
    setPerProperty(state, "allocs/prop", static_cast<double>(allocator.allocationCount() - allocationsBefore));
  }
  for (auto _ : state) {
    DynamicObject object;
    build(object);
    benchmark::DoNotOptimize(object);
  }
}

void BM_DynamicObjectBuild(benchmark::State& state) { measureOurBuild<buildOursByPath>(state); }
BENCHMARK(BM_DynamicObjectBuild)->Unit(benchmark::kMillisecond);

// The same data through the object builder's events, as readers of other formats build.
void BM_DynamicObjectBuilderEvents(benchmark::State& state) { measureOurBuild<buildOurs>(state); }
BENCHMARK(BM_DynamicObjectBuilderEvents)->Unit(benchmark::kMillisecond);

void BM_NlohmannBuild(benchmark::State& state) {
  {
    std::int64_t before = heapLiveBytes.load();
    Json root;
    buildNlohmann(root);
    setPerProperty(state, "bytes/prop", static_cast<double>(heapLiveBytes.load() - before));
  }
  for (auto _ : state) {
    Json root;
    buildNlohmann(root);
    benchmark::DoNotOptimize(root);
  }
}
BENCHMARK(BM_NlohmannBuild)->Unit(benchmark::kMillisecond);

void BM_RapidJsonBuild(benchmark::State& state) {
  {
    CountingCrtAllocator::bytes = 0;
    CountingDocument document;
    buildRapidJson(document);
    setPerProperty(state, "bytes/prop", static_cast<double>(CountingCrtAllocator::bytes));
  }
  for (auto _ : state) {
    rapidjson::Document document;
    buildRapidJson(document);
    benchmark::DoNotOptimize(document);
  }
}
BENCHMARK(BM_RapidJsonBuild)->Unit(benchmark::kMillisecond);

// ---- The built data sets, shared by the read benchmarks.

const DynamicObject& ourObject() {
  static const DynamicObject* object = [] {
    auto* built = new DynamicObject;
    buildOurs(*built);
    return built;
  }();
  return *object;
}

const Json& nlohmannRoot() {
  static const Json* root = [] {
    auto* built = new Json;
    buildNlohmann(*built);
    return built;
  }();
  return *root;
}

const rapidjson::Document& rapidJsonDocument() {
  static const rapidjson::Document* document = [] {
    auto* built = new rapidjson::Document;
    buildRapidJson(*built);
    return built;
  }();
  return *document;
}

// ---- Lookups by path, each followed by a typed read.

void BM_DynamicObjectLookup(benchmark::State& state) {
  const DynamicObject& object = ourObject();
  const Data& d = data();
  for (auto _ : state) {
    std::int64_t sum = 0;
    for (const Data::Lookup& lookup : d.lookups) {
      unsigned int property = object.getProperty(lookup.path.data(), static_cast<unsigned int>(lookup.path.size()));
      switch (object.getType(property)) {
        case type::integer:
          sum += object.getInt(property);
          break;
        case type::real:
          sum += static_cast<std::int64_t>(object.getReal(property));
          break;
        default:
          sum += object.getString(property)[4];
      }
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * propertyCount);
}
BENCHMARK(BM_DynamicObjectLookup)->Unit(benchmark::kMillisecond);

// The peers get the path already split into its two names, as their users hold them.
void BM_NlohmannLookup(benchmark::State& state) {
  const Json& root = nlohmannRoot();
  const Data& d = data();
  for (auto _ : state) {
    std::int64_t sum = 0;
    for (const Data::Lookup& lookup : d.lookups) {
      const Json& value = root[d.objectNames[lookup.object]][d.childNames[lookup.child]];
      if (value.is_number_integer()) {
        sum += value.get<std::int64_t>();
      } else if (value.is_number_float()) {
        sum += static_cast<std::int64_t>(value.get<double>());
      } else {
        sum += value.get_ref<const std::string&>()[4];
      }
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * propertyCount);
}
BENCHMARK(BM_NlohmannLookup)->Unit(benchmark::kMillisecond);

void BM_RapidJsonLookup(benchmark::State& state) {
  const rapidjson::Document& document = rapidJsonDocument();
  const Data& d = data();
  for (auto _ : state) {
    std::int64_t sum = 0;
    for (const Data::Lookup& lookup : d.lookups) {
      const rapidjson::Value& parent = document.FindMember(d.objectNames[lookup.object].c_str())->value;
      const rapidjson::Value& value = parent.FindMember(d.childNames[lookup.child].c_str())->value;
      if (value.IsInt64()) {
        sum += value.GetInt64();
      } else if (value.IsDouble()) {
        sum += static_cast<std::int64_t>(value.GetDouble());
      } else {
        sum += value.GetString()[4];
      }
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * propertyCount);
}
BENCHMARK(BM_RapidJsonLookup)->Unit(benchmark::kMillisecond);

// ---- Iteration over every property (objects included): key length and type of each.

void BM_DynamicObjectIterate(benchmark::State& state) {
  const DynamicObject& object = ourObject();
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (DynamicObjectIterator it(object, 0); !it.next().end();) {
      sum += it.getKeyLength() + object.getType(it.getProperty());
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_DynamicObjectIterate)->Unit(benchmark::kMillisecond);

void BM_NlohmannIterate(benchmark::State& state) {
  const Json& root = nlohmannRoot();
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (auto parent = root.begin(); parent != root.end(); ++parent) {
      sum += parent.key().size() + static_cast<std::uint64_t>(parent->type());
      for (auto child = parent->begin(); child != parent->end(); ++child) {
        sum += child.key().size() + static_cast<std::uint64_t>(child->type());
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_NlohmannIterate)->Unit(benchmark::kMillisecond);

void BM_RapidJsonIterate(benchmark::State& state) {
  const rapidjson::Document& document = rapidJsonDocument();
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (auto parent = document.MemberBegin(); parent != document.MemberEnd(); ++parent) {
      sum += parent->name.GetStringLength() + parent->value.GetType();
      for (auto child = parent->value.MemberBegin(); child != parent->value.MemberEnd(); ++child) {
        sum += child->name.GetStringLength() + child->value.GetType();
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_RapidJsonIterate)->Unit(benchmark::kMillisecond);

// ---- Iteration as users iterate: every property's key, and its value read with the
// object's getters.

void BM_DynamicObjectIterateAndRead(benchmark::State& state) {
  const DynamicObject& object = ourObject();
  for (auto _ : state) {
    std::uint64_t sum = 0;
    double reals = 0;
    for (DynamicObjectIterator it(object, 0); !it.next().end();) {
      const unsigned int property = it.getProperty();
      sum += it.getKeyLength() + static_cast<unsigned char>(it.getKey()[0]);
      switch (object.getType(property)) {
        case type::integer:
          sum += static_cast<std::uint64_t>(object.getInt(property));
          break;
        case type::real:
          reals += object.getReal(property);
          break;
        case type::string:
          sum += static_cast<unsigned char>(object.getString(property)[0]);
          break;
        default:
          sum += object.countChildren(property);
      }
    }
    benchmark::DoNotOptimize(sum);
    benchmark::DoNotOptimize(reals);
  }
  state.SetItemsProcessed(state.iterations() * propertyCount);
}
BENCHMARK(BM_DynamicObjectIterateAndRead)->Unit(benchmark::kMillisecond);

void readNlohmannValue(const Json& value, std::uint64_t& sum, double& reals) {
  switch (value.type()) {
    case Json::value_t::number_integer:
      sum += static_cast<std::uint64_t>(value.get<std::int64_t>());
      break;
    case Json::value_t::number_float:
      reals += value.get<double>();
      break;
    case Json::value_t::string:
      sum += static_cast<unsigned char>(value.get_ref<const std::string&>()[0]);
      break;
    default:
      sum += value.size();
  }
}

void BM_NlohmannIterateAndRead(benchmark::State& state) {
  const Json& root = nlohmannRoot();
  for (auto _ : state) {
    std::uint64_t sum = 0;
    double reals = 0;
    for (auto parent = root.begin(); parent != root.end(); ++parent) {
      sum += parent.key().size() + static_cast<unsigned char>(parent.key()[0]);
      readNlohmannValue(*parent, sum, reals);
      for (auto child = parent->begin(); child != parent->end(); ++child) {
        sum += child.key().size() + static_cast<unsigned char>(child.key()[0]);
        readNlohmannValue(*child, sum, reals);
      }
    }
    benchmark::DoNotOptimize(sum);
    benchmark::DoNotOptimize(reals);
  }
  state.SetItemsProcessed(state.iterations() * propertyCount);
}
BENCHMARK(BM_NlohmannIterateAndRead)->Unit(benchmark::kMillisecond);

// ---- Copy of the whole object (and its destruction).

void BM_DynamicObjectCopy(benchmark::State& state) {
  const DynamicObject& object = ourObject();
  for (auto _ : state) {
    DynamicObject copy(object);
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_DynamicObjectCopy)->Unit(benchmark::kMillisecond);

void BM_NlohmannCopy(benchmark::State& state) {
  const Json& root = nlohmannRoot();
  for (auto _ : state) {
    Json copy = root;
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_NlohmannCopy)->Unit(benchmark::kMillisecond);

void BM_RapidJsonCopy(benchmark::State& state) {
  const rapidjson::Document& document = rapidJsonDocument();
  for (auto _ : state) {
    rapidjson::Document copy;
    copy.CopyFrom(document, copy.GetAllocator());
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_RapidJsonCopy)->Unit(benchmark::kMillisecond);

NOX_BENCH_RATIO("iterate and read every value, vs nlohmann", "BM_DynamicObjectIterateAndRead",
                "BM_NlohmannIterateAndRead", 2.5);
NOX_BENCH_RATIO("build 100 000 properties by path, vs nlohmann (hoisted parents)", "BM_DynamicObjectBuild",
                "BM_NlohmannBuild", 1.3);
NOX_BENCH_RATIO("lookup 100 000 paths, vs nlohmann", "BM_DynamicObjectLookup", "BM_NlohmannLookup", 0.8);
NOX_BENCH_COUNTER_LIMIT("bytes per property (build by path)", "BM_DynamicObjectBuild", "bytes/prop", 40);
NOX_BENCH_COUNTER_LIMIT("heap allocations per property (build by path)", "BM_DynamicObjectBuild", "allocs/prop", 0.05);
NOX_BENCH_RATIO("copy, vs nlohmann", "BM_DynamicObjectCopy", "BM_NlohmannCopy", 0.5);
NOX_BENCH_INFO("build through builder events, vs nlohmann", "BM_DynamicObjectBuilderEvents", "BM_NlohmannBuild");
NOX_BENCH_INFO("iterate keys and types only, vs nlohmann", "BM_DynamicObjectIterate", "BM_NlohmannIterate");
// RapidJSON trades lookups (linear member search) for build speed.
NOX_BENCH_INFO("build by path, vs RapidJSON", "BM_DynamicObjectBuild", "BM_RapidJsonBuild");
NOX_BENCH_INFO("lookup, vs RapidJSON", "BM_DynamicObjectLookup", "BM_RapidJsonLookup");
NOX_BENCH_INFO("iterate keys and types only, vs RapidJSON", "BM_DynamicObjectIterate", "BM_RapidJsonIterate");
NOX_BENCH_INFO("copy, vs RapidJSON", "BM_DynamicObjectCopy", "BM_RapidJsonCopy");

}  // namespace
