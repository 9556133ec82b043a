// The library's push interface for tree-shaped data. A producer describes a tree of
// null, boolean, integer, real, string, object and array values as a sequence of build
// events; the builder turns them into something else (a DynamicObject, JSON text, a
// binary message). A well-formed sequence is `begin`, one value, `end`, where a value
// is a scalar event, or `beginObject` (`objectChild` value)* `endObject`, or
// `beginArray` (`arrayChild` value)* `endArray`.
//
// Every event returns whether it was accepted; a refusal means the build should stop.
// The defaults refuse every value event (reporting through the builder's logger), so a
// builder overrides only the events it supports.
#pragma once

#include <nox/utils/Export.h>

#include <cstdint>

namespace nox::utils {

class AbstractLogger;

class NOX_UTILS_API AbstractObjectBuilder {
 public:
  AbstractObjectBuilder() = default;
  AbstractObjectBuilder(const AbstractObjectBuilder&) = default;
  AbstractObjectBuilder& operator=(const AbstractObjectBuilder&) = default;
  virtual ~AbstractObjectBuilder();

  virtual void setLogger(AbstractLogger* logger);
  virtual AbstractLogger* getLogger();

  virtual bool begin();
  virtual bool end();

  virtual bool null();
  virtual bool boolean(bool value);
  virtual bool integer(std::int64_t value);
  virtual bool real(double value);
  // Measures the NUL-terminated text and forwards to string(text, length).
  virtual bool string(const char* text);
  virtual bool string(const char* text, unsigned int length);

  virtual bool beginObject();
  // Measures the NUL-terminated key and forwards to objectChild(key, length).
  virtual bool objectChild(const char* key);
  virtual bool objectChild(const char* key, unsigned int length);
  virtual bool endObject();

  virtual bool beginArray();
  virtual bool arrayChild();
  virtual bool endArray();

 private:
  AbstractLogger* logger_ = nullptr;
};

}  // namespace nox::utils
