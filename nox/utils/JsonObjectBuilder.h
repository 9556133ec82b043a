// JSON text form of tree data. JsonObjectBuilder is an object builder that streams
// JSON text into a data stream; deserializeJson drives any object builder from JSON
// text read from a data stream. Two helpers join both to dynamic objects.
//
// The top level of a written text is always an object or an array: a lone scalar is
// refused, and a lone null is written as {}. Objects and arrays nest at most
// JsonObjectBuilder::getMaximumDepth() levels deep, on writing and on reading alike, so
// that whatever is read can be written back.
#pragma once

#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Export.h>
#include <nox/utils/ScopedPtr.h>

#include <cstdint>

namespace nox::utils {

class AbstractDataInputOutput;
class DynamicObject;

class NOX_UTILS_API JsonObjectBuilder : public AbstractObjectBuilder {
 public:
  // Deepest nesting of objects and arrays in a JSON text.
  static constexpr unsigned int getMaximumDepth() { return 127; }

  // Writes into `output`, which must outlive the builder. `beautify` indents the text
  // over several lines; otherwise it is written compact.
  JsonObjectBuilder(AbstractDataInputOutput& output, bool beautify);
  ~JsonObjectBuilder() override;

  JsonObjectBuilder(const JsonObjectBuilder&) = delete;
  JsonObjectBuilder& operator=(const JsonObjectBuilder&) = delete;

  void setLogger(AbstractLogger* logger) override;

  // A build runs from begin() to end(); the builder may then start another text on the
  // same stream. end() does not check that every container was closed; it writes the
  // text still gathered and succeeds whenever a build was under way (a stream that
  // refuses that text reports it).
  bool begin() override;
  bool end() override;

  using AbstractObjectBuilder::objectChild;
  using AbstractObjectBuilder::string;

  // Every event is refused once one was refused (the text is broken from there on), or
  // once the stream failed to take a piece of text (the stream reports it).
  bool null() override;
  bool boolean(bool value) override;
  bool integer(std::int64_t value) override;
  // Only finite values have a JSON form. A real is written as the shortest text that
  // reads back to the same double, with a fraction when it is integral ("1.0").
  bool real(double value) override;
  bool string(const char* text, unsigned int length) override;
  bool beginObject() override;
  bool objectChild(const char* key, unsigned int length) override;
  bool endObject() override;
  bool beginArray() override;
  // Array elements need no marker: writes nothing.
  bool arrayChild() override;
  bool endArray() override;

 private:
  struct State;

  // Whether the text may take a scalar: only inside an object or array.
  bool checkRoot();

  ScopedPtr<State> state_;
  // An object or array was opened by the current build.
  bool root_ = false;
  const bool beautify_;
};

// Parses the JSON text that `input` holds, from its read position to its end, into
// `builder`'s events (array elements as arrayChild then the value; begin() and end() are
// not called). Reports through the builder's logger, as error::invalidData, a text that
// is not JSON ("Invalid JSON at byte N: " and the parser's reason) or that nests deeper
// than getMaximumDepth(). Returns false on such a text or when the builder refused an
// event; whatever the builder took before stays with it.
NOX_UTILS_API bool deserializeJson(AbstractObjectBuilder& builder, AbstractDataInputOutput& input);

// Writes `object` as compact JSON text. A scalar root is refused (see above); a null
// root is written as {}.
NOX_UTILS_API bool serializeDynamicObjectToJson(const DynamicObject& object, AbstractDataInputOutput& output,
                                                AbstractLogger* logger);

// Reads a JSON text into the root of `object` through a DynamicObjectBuilder, which adds
// to what the object already holds. A repeated key follows the builder's rule: a scalar
// after a scalar wins, while a value that would turn a container into anything else (or
// a scalar into a container), such as {"a":1,"a":[1]}, is refused and the read fails,
// leaving the old value whole. Fails as deserializeJson.
NOX_UTILS_API bool deserializeDynamicObjectFromJson(DynamicObject& object, AbstractDataInputOutput& input,
                                                    AbstractLogger* logger);

}  // namespace nox::utils
