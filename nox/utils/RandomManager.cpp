#include <nox/utils/RandomManager.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/String.h>
#include <nox/utils/impl/RandomText.h>

namespace nox::utils {

char* serializeRandomManager(unsigned int& length, const RandomManager& manager, AbstractLogger* logger) {
  proto::RandomManager message;
  details::setCurrentRandomVersion(*message.mutable_version());
  message.mutable_randommanager()->set_seed(manager.getSeed());
  return details::printRandomText(message, length, logger);
}

bool deserializeRandomManager(const char* data, unsigned int length, RandomManager& manager, AbstractLogger* logger) {
  proto::RandomManager message;
  String account;
  if (!details::parseRandomText(data, length, message, account)) {
    NOX_LOG_ERROR(logger, error::invalidData, "Unable to deserialize a random manager: " << account);
    return false;
  }
  if (!details::isCurrentRandomVersion(message.version(), "random manager", logger)) return false;
  const char* missing = !message.has_randommanager()          ? "randomManager"
                        : !message.randommanager().has_seed() ? "seed"
                                                              : nullptr;
  if (missing != nullptr) {
    details::reportMissingRandomField("random manager", missing, logger);
    return false;
  }
  manager.seed(message.randommanager().seed());
  return true;
}

}  // namespace nox::utils
