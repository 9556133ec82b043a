// Passes an event depending on how many times its request has been reached. `hits`
// starts at 1 and update() adds one, so after k updates the filter has seen k + 1 hits.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/debugger/AbstractEventFilter.h>

#include <cstdint>

namespace nox::utils::debugger {

class NOX_UTILS_API HitCountFilter : public AbstractEventFilter {
  NOX_STATIC_OBJECT("nox::utils::debugger::HitCountFilter", "6bd03c2e-d96f-4318-a68e-a359970c6ba3",
                    &HitCountFilter::declareMetadata)
 public:
  enum Mode : std::int32_t {
    // From the count-th hit on.
    atLeast = 0,
    // At the count-th hit only.
    exactly = 1,
    // At every multiple of count; a count of 0 is refused (assertion) and never passes.
    multipleOf = 2,
  };

  static bool declareMetadata(TypeManager& types, AbstractLogger* logger);

  HitCountFilter(std::int32_t count, Mode mode);

  // Saturates instead of wrapping around.
  void update() override;
  // Any mode other than the three above never passes.
  bool operator()() const;

  std::int32_t getCount() const { return count_; }
  Mode getMode() const { return mode_; }
  std::int32_t getHits() const { return hits_; }

 private:
  std::int32_t count_;
  Mode mode_;
  std::int32_t hits_ = 1;
};

}  // namespace nox::utils::debugger
