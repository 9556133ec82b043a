#include <nox/utils/debugger/impl/Replies.h>

#include <nox/utils/String.h>
#include <nox/utils/Uri.h>

namespace nox::utils::debugger::impl {

bool writeUri(AbstractObjectBuilder& builder, const Uri& uri) {
  const unsigned int length = uri.computeStringLength();
  // computeString also writes the terminating zero, which the string already has room for.
  String text(length, '\0');
  uri.computeString(text.data());
  return builder.string(text.data(), length);
}

}  // namespace nox::utils::debugger::impl
