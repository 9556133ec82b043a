#include <nox/utils/debugger/MainContext.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractObjectBuilder.h>
#include <nox/utils/TypeManager.h>
#include <nox/utils/Uri.h>
#include <nox/utils/debugger/impl/Replies.h>

namespace nox::utils::debugger {

bool MainContext::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractContext::getClassTypeId(), logger);
}

const Uri& MainContext::getMainLocation() {
  // Never destroyed: contexts may still be read while the process exits.
  static const Uri* const location = NOX_NEW Uri(Uri::create("nox:simulation"));
  return *location;
}

const Uri& MainContext::getLocation() const { return getMainLocation(); }

bool MainContext::serialize(AbstractObjectBuilder& builder) const {
  return builder.beginObject() && builder.objectChild("location") && impl::writeUri(builder, getLocation()) &&
         builder.endObject();
}

}  // namespace nox::utils::debugger
