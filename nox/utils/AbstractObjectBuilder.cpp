#include <nox/utils/AbstractObjectBuilder.h>

#include <nox/utils/AbstractLogger.h>

#include <cstring>

namespace nox::utils {

namespace {

// The refusal of an event the builder does not support.
bool refuse(AbstractLogger* logger, const char* message) {
  NOX_LOG_ERROR(logger, error::invalidOperation, message);
  return false;
}

constexpr const char* objectsNotSupported = "Object properties not supported by this object builder.";
constexpr const char* arraysNotSupported = "Array properties not supported by this object builder.";

}  // namespace

AbstractObjectBuilder::~AbstractObjectBuilder() = default;

void AbstractObjectBuilder::setLogger(AbstractLogger* logger) { logger_ = logger; }

AbstractLogger* AbstractObjectBuilder::getLogger() { return logger_; }

bool AbstractObjectBuilder::begin() { return true; }

bool AbstractObjectBuilder::end() { return true; }

bool AbstractObjectBuilder::null() {
  return refuse(getLogger(), "Null properties not supported by this object builder.");
}

bool AbstractObjectBuilder::boolean(bool) {
  return refuse(getLogger(), "Boolean properties not supported by this object builder.");
}

bool AbstractObjectBuilder::integer(std::int64_t) {
  return refuse(getLogger(), "Integer properties not supported by this object builder.");
}

bool AbstractObjectBuilder::real(double) {
  return refuse(getLogger(), "Real properties not supported by this object builder.");
}

bool AbstractObjectBuilder::string(const char* text) {
  return string(text, static_cast<unsigned int>(std::strlen(text)));
}

bool AbstractObjectBuilder::string(const char*, unsigned int) {
  return refuse(getLogger(), "String properties not supported by this object builder.");
}

bool AbstractObjectBuilder::beginObject() { return refuse(getLogger(), objectsNotSupported); }

bool AbstractObjectBuilder::objectChild(const char* key) {
  return objectChild(key, static_cast<unsigned int>(std::strlen(key)));
}

bool AbstractObjectBuilder::objectChild(const char*, unsigned int) { return refuse(getLogger(), objectsNotSupported); }

bool AbstractObjectBuilder::endObject() { return refuse(getLogger(), objectsNotSupported); }

bool AbstractObjectBuilder::beginArray() { return refuse(getLogger(), arraysNotSupported); }

bool AbstractObjectBuilder::arrayChild() { return refuse(getLogger(), arraysNotSupported); }

bool AbstractObjectBuilder::endArray() { return refuse(getLogger(), arraysNotSupported); }

}  // namespace nox::utils
