#include <nox/utils/Random.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/String.h>
#include <nox/utils/impl/RandomText.h>

namespace nox::utils {

Random::Random(unsigned int seed) : state_(NOX_NEW State) { reseed(seed); }

Random::Random(const Random& other) : state_(NOX_NEW State(*other.state_)) {}

Random& Random::operator=(const Random& other) {
  *state_ = *other.state_;
  return *this;
}

Random::~Random() { NOX_DELETE(state_); }

void Random::reseed(unsigned int seed) {
  details::seedSfmt(state_->words, seed);
  state_->index = details::sfmtStateWords;
  state_->regenerations = 0;
  state_->seed = seed;
  prepareBound(0xFFFFFFFFU);
}

void Random::regenerate() {
  details::regenerateSfmt(state_->words);
  ++state_->regenerations;
  state_->index = 0;
}

// Right after seeding the state counts as generation 0 fully read, which makes every
// state, fresh or not, "generation g read up to index".
std::uint64_t Random::getCount() const {
  return state_->regenerations * details::sfmtStateWords + state_->index - details::sfmtStateWords;
}

void Random::advance(std::uint64_t count) {
  const std::uint64_t current = getCount();
  if (count < current) {
    NOX_FAIL("a random stream can't move backwards, from " << current << " to " << count << " numbers drawn");
    return;
  }
  if (count == current) return;
  // After `count` draws the words hold generation ceil(count / 624), read up to the rest.
  const std::uint64_t generation = count / details::sfmtStateWords + (count % details::sfmtStateWords != 0 ? 1 : 0);
  while (state_->regenerations < generation) regenerate();
  state_->index = static_cast<std::uint32_t>(count - (generation - 1) * details::sfmtStateWords);
}

void Random::prepareBound(std::uint32_t n) {
  Bound& bound = state_->bound;
  const std::uint64_t range = static_cast<std::uint64_t>(n) + 1;
  bound.n = n;
  bound.bucket = static_cast<std::uint32_t>((0xFFFFFFFFU - n) / range + 1);
  bound.limit = static_cast<std::uint32_t>(bound.bucket * range - 1);
  bound.reciprocal = ((std::uint64_t{1} << 63) - 1) / bound.bucket + 1;
}

char* serializeRandom(unsigned int& length, const Random& random, AbstractLogger* logger) {
  proto::Random message;
  details::setCurrentRandomVersion(*message.mutable_version());
  message.mutable_random()->set_seed(random.getSeed());
  message.mutable_random()->set_count(random.getCount());
  return details::printRandomText(message, length, logger);
}

bool deserializeRandom(const char* data, unsigned int length, Random& random, AbstractLogger* logger) {
  proto::Random message;
  String account;
  if (!details::parseRandomText(data, length, message, account)) {
    NOX_LOG_ERROR(logger, error::invalidData, "Unable to deserialize a random stream: " << account);
    return false;
  }
  if (!details::isCurrentRandomVersion(message.version(), "random", logger)) return false;
  const char* missing = !message.has_random()           ? "random"
                        : !message.random().has_seed()  ? "seed"
                        : !message.random().has_count() ? "count"
                                                        : nullptr;
  if (missing != nullptr) {
    details::reportMissingRandomField("random", missing, logger);
    return false;
  }
  if (message.random().count() > Random::getMaximumRestoredCount()) {
    NOX_LOG_ERROR(logger, error::invalidData,
                  "Error while deserializing random: the saved count, "
                      << message.random().count() << ", is beyond the " << Random::getMaximumRestoredCount()
                      << " numbers a stream is restored to");
    return false;
  }
  random.reseed(message.random().seed());
  random.advance(message.random().count());
  return true;
}

}  // namespace nox::utils
