#include <nox/utils/debugger/HitCountFilter.h>

#include <nox/utils/Assertion.h>
#include <nox/utils/TypeManager.h>

#include <limits>

namespace nox::utils::debugger {

bool HitCountFilter::declareMetadata(TypeManager& types, AbstractLogger* logger) {
  return types.addBaseType(getClassTypeId(), AbstractEventFilter::getClassTypeId(), logger);
}

HitCountFilter::HitCountFilter(std::int32_t count, Mode mode) : count_(count), mode_(mode) {
  NOX_ASSERT(mode != multipleOf || count != 0, "A hit count filter counting multiples needs a non-zero count.");
}

void HitCountFilter::update() {
  if (hits_ < std::numeric_limits<std::int32_t>::max()) ++hits_;
}

bool HitCountFilter::operator()() const {
  switch (mode_) {
    case atLeast:
      return hits_ >= count_;
    case exactly:
      return hits_ == count_;
    case multipleOf:
      return count_ != 0 && hits_ % count_ == 0;
  }
  return false;
}

}  // namespace nox::utils::debugger
