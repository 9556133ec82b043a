// JSON and binary serialization of a ~5 MB dynamic object of mixed content.
//
// JSON parsing into a DynamicObject is measured against RapidJSON and nlohmann::json
// building their documents, and against its floor: bare YAJL with no-op callbacks fed
// the same 256-byte chunks. Two more texts measure the reader's cost by token length:
// one 10 MB string value, and 100 000 short strings, against bare YAJL fed 64 KiB at a
// time. Serialization is measured against the bare YAJL generator
// writing the same text (replayed from a recorded event list) into a plain string, and
// against the peers' writers. The binary round trip is measured against the JSON one.
#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractDataInputOutput.h>
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/impl/ProtobufDynamicObjectBuilder.h>

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <yajl/yajl_gen.h>
#include <yajl/yajl_parse.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/Ratios.h"

namespace {

using nox::utils::DynamicObject;
using nox::utils::MemoryInputOutput;

// ---- The document: records of numbers, texts (some escaped or non-ASCII), booleans,
// nulls, small arrays and a nested object.

DynamicObject makeDocument() {
  std::mt19937_64 random(42);
  DynamicObject object;
  nox::utils::DynamicObjectBuilder builder(object, 0);
  auto text = [&](std::size_t length) {
    static const char* const pieces[] = {"alpha ", "beta ", "\u00e9t\u00e9 ", "tab\t", "\"quoted\" ", "x/y ", "42 "};
    std::string value;
    while (value.size() < length) value += pieces[random() % 7];
    return value;
  };
  builder.beginArray();
  for (int i = 0; i < 9000; ++i) {
    builder.arrayChild();
    builder.beginObject();
    builder.objectChild("id");
    builder.integer(static_cast<std::int64_t>(random() >> 20));
    builder.objectChild("name");
    builder.string(text(16).c_str());
    builder.objectChild("score");
    builder.real(static_cast<double>(random() % 1000000) / 1024.0);
    builder.objectChild("active");
    builder.boolean(random() % 2 == 0);
    builder.objectChild("parent");
    builder.null();
    builder.objectChild("tags");
    builder.beginArray();
    for (int tag = 0; tag < 4; ++tag) {
      builder.arrayChild();
      builder.string(text(6).c_str());
    }
    builder.endArray();
    builder.objectChild("position");
    builder.beginObject();
    for (const char* axis : {"x", "y", "z"}) {
      builder.objectChild(axis);
      builder.real(static_cast<double>(static_cast<std::int64_t>(random() % 2000001) - 1000000) / 1000.0);
    }
    builder.endObject();
    builder.objectChild("counts");
    builder.beginArray();
    for (int count = 0; count < 6; ++count) {
      builder.arrayChild();
      builder.integer(static_cast<std::int64_t>(random() % 100000));
    }
    builder.endArray();
    builder.objectChild("description");
    builder.string(text(300).c_str());
    builder.endObject();
  }
  builder.endArray();
  return object;
}

const DynamicObject& document() {
  static const DynamicObject object = makeDocument();
  return object;
}

const std::string& documentText() {
  static const std::string text = [] {
    MemoryInputOutput output;
    nox::utils::serializeDynamicObjectToJson(document(), output, nullptr);
    return std::string(output.getData(), output.getSize());
  }();
  return text;
}

// Reads a string in place, without the copy a MemoryInputOutput would make first.
class StringInput : public nox::utils::AbstractDataInputOutput {
 public:
  explicit StringInput(const std::string& text) : text_(text) {}
  bool isWritable() const override { return false; }
  bool write(const char*, unsigned int, nox::utils::AbstractLogger*) override { return false; }
  bool isReadable() const override { return true; }
  bool read(char* buffer, unsigned int& size, nox::utils::AbstractLogger*) override {
    size = static_cast<unsigned int>(std::min<std::size_t>(size, text_.size() - position_));
    std::memcpy(buffer, text_.data() + position_, size);
    position_ += size;
    return size != 0;
  }

 private:
  const std::string& text_;
  std::size_t position_ = 0;
};

// Appends to a string: the sink that the generator floor writes to as well.
class StringOutput : public nox::utils::AbstractDataInputOutput {
 public:
  bool isWritable() const override { return true; }
  bool write(const char* data, unsigned int size, nox::utils::AbstractLogger*) override {
    text.append(data, size);
    return true;
  }
  bool isReadable() const override { return false; }
  bool read(char*, unsigned int& size, nox::utils::AbstractLogger*) override {
    size = 0;
    return false;
  }

  std::string text;
};

// ---- JSON parsing.

void BM_JsonParse_DynamicObject(benchmark::State& state) {
  for (auto _ : state) {
    StringInput input(documentText());
    DynamicObject object;
    benchmark::DoNotOptimize(nox::utils::deserializeDynamicObjectFromJson(object, input, nullptr));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonParse_DynamicObject)->Unit(benchmark::kMillisecond);

// The reader's own cost: the same parse into a builder that takes every event and keeps nothing.
class NoOpBuilder : public nox::utils::AbstractObjectBuilder {
 public:
  using AbstractObjectBuilder::objectChild;
  using AbstractObjectBuilder::string;
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool integer(std::int64_t) override { return true; }
  bool real(double) override { return true; }
  bool string(const char*, unsigned int) override { return true; }
  bool beginObject() override { return true; }
  bool objectChild(const char*, unsigned int) override { return true; }
  bool endObject() override { return true; }
  bool beginArray() override { return true; }
  bool arrayChild() override { return true; }
  bool endArray() override { return true; }
};

void BM_JsonParse_NoOpBuilder(benchmark::State& state) {
  for (auto _ : state) {
    StringInput input(documentText());
    NoOpBuilder builder;
    benchmark::DoNotOptimize(nox::utils::deserializeJson(builder, input));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonParse_NoOpBuilder)->Unit(benchmark::kMillisecond);

void BM_JsonParse_Nlohmann(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(documentText()));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonParse_Nlohmann)->Unit(benchmark::kMillisecond);

void BM_JsonParse_RapidJson(benchmark::State& state) {
  for (auto _ : state) {
    rapidjson::Document parsed;
    parsed.Parse(documentText().c_str(), documentText().size());
    benchmark::DoNotOptimize(parsed.HasParseError());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonParse_RapidJson)->Unit(benchmark::kMillisecond);

int ignoreEvent(void*) { return 1; }
int ignoreBoolean(void*, int) { return 1; }
int ignoreInteger(void*, long long) { return 1; }
int ignoreDouble(void*, double) { return 1; }
int ignoreText(void*, const unsigned char*, std::size_t) { return 1; }

// The same callbacks as the reader's (numbers converted, strings unescaped), doing nothing.
const yajl_callbacks noOpCallbacks = {ignoreEvent, ignoreBoolean, ignoreInteger, ignoreDouble, nullptr,    ignoreText,
                                      ignoreEvent, ignoreText,    ignoreEvent,   ignoreEvent,  ignoreEvent};

void BM_JsonParse_YajlFloor(benchmark::State& state) {
  const std::string& text = documentText();
  for (auto _ : state) {
    yajl_handle parser = yajl_alloc(&noOpCallbacks, nullptr, nullptr);
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    for (std::size_t offset = 0; offset < text.size(); offset += 256) {
      yajl_parse(parser, bytes + offset, std::min<std::size_t>(256, text.size() - offset));
    }
    benchmark::DoNotOptimize(yajl_complete_parse(parser));
    yajl_free(parser);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_JsonParse_YajlFloor)->Unit(benchmark::kMillisecond);

// ---- JSON reading by token length: one 10 MB string value, and 100 000 short strings.
// The reader reads its stream 256 bytes at a time; its cost must stay linear in the
// length of a token, which the floor (bare YAJL fed 64 KiB at a time) bounds.

const std::string& longStringText() {
  static const std::string text = [] {
    std::string value(10 * 1000 * 1000, ' ');
    for (std::size_t i = 0; i < value.size(); ++i) value[i] = static_cast<char>('a' + (i * 7 + i / 4096) % 26);
    return "[\"" + value + "\"]";
  }();
  return text;
}

const std::string& shortStringsText() {
  static const std::string text = [] {
    std::string list = "[";
    for (int i = 0; i < 100000; ++i) list += (i == 0 ? "\"s" : ",\"s") + std::to_string(i) + "\"";
    return list + "]";
  }();
  return text;
}

void readIntoDynamicObject(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    StringInput input(text);
    DynamicObject object;
    benchmark::DoNotOptimize(nox::utils::deserializeDynamicObjectFromJson(object, input, nullptr));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void readWithBareYajl64K(benchmark::State& state, const std::string& text) {
  const std::size_t feed = 64 * 1024;
  for (auto _ : state) {
    yajl_handle parser = yajl_alloc(&noOpCallbacks, nullptr, nullptr);
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    for (std::size_t offset = 0; offset < text.size(); offset += feed) {
      yajl_parse(parser, bytes + offset, std::min(feed, text.size() - offset));
    }
    benchmark::DoNotOptimize(yajl_complete_parse(parser));
    yajl_free(parser);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void BM_JsonRead_LongString_DynamicObject(benchmark::State& state) { readIntoDynamicObject(state, longStringText()); }
BENCHMARK(BM_JsonRead_LongString_DynamicObject)->Unit(benchmark::kMillisecond);

void BM_JsonRead_LongString_Yajl64K(benchmark::State& state) { readWithBareYajl64K(state, longStringText()); }
BENCHMARK(BM_JsonRead_LongString_Yajl64K)->Unit(benchmark::kMillisecond);

void BM_JsonRead_ShortStrings_DynamicObject(benchmark::State& state) {
  readIntoDynamicObject(state, shortStringsText());
}
BENCHMARK(BM_JsonRead_ShortStrings_DynamicObject)->Unit(benchmark::kMillisecond);

void BM_JsonRead_ShortStrings_Yajl64K(benchmark::State& state) { readWithBareYajl64K(state, shortStringsText()); }
BENCHMARK(BM_JsonRead_ShortStrings_Yajl64K)->Unit(benchmark::kMillisecond);

// ---- JSON serialization.

void BM_JsonSerialize_DynamicObject(benchmark::State& state) {
  for (auto _ : state) {
    StringOutput output;
    benchmark::DoNotOptimize(nox::utils::serializeDynamicObjectToJson(document(), output, nullptr));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonSerialize_DynamicObject)->Unit(benchmark::kMillisecond);

// The document's build events, recorded once, so that the floor pays for generation only.
class EventRecorder : public nox::utils::AbstractObjectBuilder {
 public:
  enum Kind : std::uint8_t { Null, Boolean, Integer, Real, String, Key, BeginObject, EndObject, BeginArray, EndArray };
  struct Event {
    Kind kind;
    std::int64_t integer;
    double real;
    std::uint32_t offset;
    std::uint32_t length;
  };

  using AbstractObjectBuilder::objectChild;
  using AbstractObjectBuilder::string;

  bool null() override { return add(Null); }
  bool boolean(bool value) override { return add(Boolean, value); }
  bool integer(std::int64_t value) override { return add(Integer, value); }
  bool real(double value) override { return add(Real, 0, value); }
  bool string(const char* text, unsigned int length) override { return addText(String, text, length); }
  bool beginObject() override { return add(BeginObject); }
  bool objectChild(const char* key, unsigned int length) override { return addText(Key, key, length); }
  bool endObject() override { return add(EndObject); }
  bool beginArray() override { return add(BeginArray); }
  bool arrayChild() override { return true; }
  bool endArray() override { return add(EndArray); }

  std::vector<Event> events;
  std::string texts;

 private:
  bool add(Kind kind, std::int64_t integer = 0, double real = 0, std::uint32_t offset = 0, std::uint32_t length = 0) {
    events.push_back({kind, integer, real, offset, length});
    return true;
  }
  bool addText(Kind kind, const char* text, unsigned int length) {
    add(kind, 0, 0, static_cast<std::uint32_t>(texts.size()), length);
    texts.append(text, length);
    return true;
  }
};

const EventRecorder& documentEvents() {
  static const EventRecorder recorder = [] {
    EventRecorder events;
    nox::utils::serializeDynamicObject(document(), events);
    return events;
  }();
  return recorder;
}

// The writer's own cost: the recorded events replayed into a JsonObjectBuilder, without
// the walk of the dynamic object.
void BM_JsonSerialize_RecordedEvents(benchmark::State& state) {
  const EventRecorder& recorded = documentEvents();
  const char* texts = recorded.texts.data();
  for (auto _ : state) {
    StringOutput output;
    nox::utils::JsonObjectBuilder builder(output, false);
    builder.begin();
    for (const EventRecorder::Event& event : recorded.events) {
      switch (event.kind) {
        case EventRecorder::Null:
          builder.null();
          break;
        case EventRecorder::Boolean:
          builder.boolean(event.integer != 0);
          break;
        case EventRecorder::Integer:
          builder.integer(event.integer);
          break;
        case EventRecorder::Real:
          builder.real(event.real);
          break;
        case EventRecorder::String:
          builder.string(texts + event.offset, event.length);
          break;
        case EventRecorder::Key:
          builder.objectChild(texts + event.offset, event.length);
          break;
        case EventRecorder::BeginObject:
          builder.beginObject();
          break;
        case EventRecorder::EndObject:
          builder.endObject();
          break;
        case EventRecorder::BeginArray:
          builder.beginArray();
          break;
        case EventRecorder::EndArray:
          builder.endArray();
          break;
      }
    }
    benchmark::DoNotOptimize(builder.end());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonSerialize_RecordedEvents)->Unit(benchmark::kMillisecond);

void appendToString(void* context, const char* text, std::size_t length) {
  static_cast<std::string*>(context)->append(text, length);
}

void BM_JsonSerialize_YajlFloor(benchmark::State& state) {
  const EventRecorder& recorded = documentEvents();
  const auto* texts = reinterpret_cast<const unsigned char*>(recorded.texts.data());
  for (auto _ : state) {
    std::string output;
    yajl_gen generator = yajl_gen_alloc(nullptr);
    yajl_gen_config(generator, yajl_gen_print_callback, appendToString, &output);
    for (const EventRecorder::Event& event : recorded.events) {
      switch (event.kind) {
        case EventRecorder::Null:
          yajl_gen_null(generator);
          break;
        case EventRecorder::Boolean:
          yajl_gen_bool(generator, event.integer != 0);
          break;
        case EventRecorder::Integer:
          yajl_gen_integer(generator, event.integer);
          break;
        case EventRecorder::Real:
          yajl_gen_double(generator, event.real);
          break;
        case EventRecorder::String:
        case EventRecorder::Key:
          yajl_gen_string(generator, texts + event.offset, event.length);
          break;
        case EventRecorder::BeginObject:
          yajl_gen_map_open(generator);
          break;
        case EventRecorder::EndObject:
          yajl_gen_map_close(generator);
          break;
        case EventRecorder::BeginArray:
          yajl_gen_array_open(generator);
          break;
        case EventRecorder::EndArray:
          yajl_gen_array_close(generator);
          break;
      }
    }
    yajl_gen_free(generator);
    benchmark::DoNotOptimize(output.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonSerialize_YajlFloor)->Unit(benchmark::kMillisecond);

void BM_JsonSerialize_Nlohmann(benchmark::State& state) {
  const nlohmann::json parsed = nlohmann::json::parse(documentText());
  for (auto _ : state) benchmark::DoNotOptimize(parsed.dump());
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonSerialize_Nlohmann)->Unit(benchmark::kMillisecond);

void BM_JsonSerialize_RapidJson(benchmark::State& state) {
  rapidjson::Document parsed;
  parsed.Parse(documentText().c_str(), documentText().size());
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    parsed.Accept(writer);
    benchmark::DoNotOptimize(buffer.GetString());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * documentText().size()));
}
BENCHMARK(BM_JsonSerialize_RapidJson)->Unit(benchmark::kMillisecond);

// ---- Round trips, each into a fresh object.

void BM_RoundTrip_Json(benchmark::State& state) {
  for (auto _ : state) {
    StringOutput output;
    nox::utils::serializeDynamicObjectToJson(document(), output, nullptr);
    StringInput input(output.text);
    DynamicObject copy;
    benchmark::DoNotOptimize(nox::utils::deserializeDynamicObjectFromJson(copy, input, nullptr));
  }
}
BENCHMARK(BM_RoundTrip_Json)->Unit(benchmark::kMillisecond);

void BM_RoundTrip_Binary(benchmark::State& state) {
  for (auto _ : state) {
    unsigned int size = 0;
    char* bytes = nox::utils::serializeDynamicObject(size, document(), nullptr);
    DynamicObject copy;
    benchmark::DoNotOptimize(nox::utils::deserializeDynamicObject(bytes, size, copy, nullptr));
    NOX_DEALLOCATE(bytes);
  }
}
BENCHMARK(BM_RoundTrip_Binary)->Unit(benchmark::kMillisecond);

// The two halves of the binary round trip.
void BM_Binary_Serialize(benchmark::State& state) {
  for (auto _ : state) {
    unsigned int size = 0;
    char* bytes = nox::utils::serializeDynamicObject(size, document(), nullptr);
    benchmark::DoNotOptimize(bytes);
    NOX_DEALLOCATE(bytes);
  }
}
BENCHMARK(BM_Binary_Serialize)->Unit(benchmark::kMillisecond);

void BM_Binary_Deserialize(benchmark::State& state) {
  unsigned int size = 0;
  char* bytes = nox::utils::serializeDynamicObject(size, document(), nullptr);
  for (auto _ : state) {
    DynamicObject copy;
    benchmark::DoNotOptimize(nox::utils::deserializeDynamicObject(bytes, size, copy, nullptr));
  }
  NOX_DEALLOCATE(bytes);
}
BENCHMARK(BM_Binary_Deserialize)->Unit(benchmark::kMillisecond);

NOX_BENCH_RATIO("JSON text -> object, vs nlohmann", "BM_JsonParse_DynamicObject", "BM_JsonParse_Nlohmann", 1.0);
NOX_BENCH_RATIO("JSON text -> object, vs bare YAJL fed 256-byte chunks", "BM_JsonParse_DynamicObject",
                "BM_JsonParse_YajlFloor", 2.0);
NOX_BENCH_RATIO("object -> JSON text, vs the bare YAJL generator", "BM_JsonSerialize_DynamicObject",
                "BM_JsonSerialize_YajlFloor", 1.0);
NOX_BENCH_RATIO("binary round trip, vs JSON round trip", "BM_RoundTrip_Binary", "BM_RoundTrip_Json", 0.6);
NOX_BENCH_RATIO("JSON read of one 10 MB string, vs bare YAJL fed 64 KiB", "BM_JsonRead_LongString_DynamicObject",
                "BM_JsonRead_LongString_Yajl64K", 2.0);
// The layers on their own.
NOX_BENCH_INFO("JSON reader into a no-op builder, vs bare YAJL fed 256-byte chunks", "BM_JsonParse_NoOpBuilder",
               "BM_JsonParse_YajlFloor");
NOX_BENCH_INFO("JSON writer fed recorded events, vs the bare YAJL generator", "BM_JsonSerialize_RecordedEvents",
               "BM_JsonSerialize_YajlFloor");
NOX_BENCH_INFO("JSON read of 100 000 short strings, vs bare YAJL fed 64 KiB", "BM_JsonRead_ShortStrings_DynamicObject",
               "BM_JsonRead_ShortStrings_Yajl64K");
NOX_BENCH_INFO("JSON text -> object, vs RapidJSON", "BM_JsonParse_DynamicObject", "BM_JsonParse_RapidJson");
NOX_BENCH_INFO("object -> JSON text, vs nlohmann", "BM_JsonSerialize_DynamicObject", "BM_JsonSerialize_Nlohmann");
NOX_BENCH_INFO("object -> JSON text, vs RapidJSON", "BM_JsonSerialize_DynamicObject", "BM_JsonSerialize_RapidJson");

}  // namespace
