// Helpers shared by the resource handlers of the built-in engines: a reply is `begin`,
// one value, `end`, and any refused builder event turns the status into an error.
#pragma once

#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/Export.h>
#include <nox/utils/debugger/Status.h>

namespace nox::utils {
class Uri;
}

namespace nox::utils::debugger::impl {

// `writeValue(builder)` writes the value and returns whether the builder accepted it.
template <class WriteValue>
resources::Status reply(AbstractObjectBuilder& builder, WriteValue writeValue) {
  return builder.begin() && writeValue(builder) && builder.end() ? resources::done : resources::error;
}

// The null reply of commands and deletions.
inline resources::Status replyNull(AbstractObjectBuilder& builder) {
  return reply(builder, [](AbstractObjectBuilder& out) { return out.null(); });
}

// Writes the text form of `uri` as a string value.
NOX_UTILS_API bool writeUri(AbstractObjectBuilder& builder, const Uri& uri);

}  // namespace nox::utils::debugger::impl
