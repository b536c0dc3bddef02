#include "platform/ServiceManager.h"

#include <atomic>

namespace tov {
namespace {

std::atomic<ServiceManager*> testManager{nullptr};

}  // namespace

ServiceManager& ServiceManager::shared() {
    ServiceManager* const manager = testManager.load();
    return manager != nullptr ? *manager : platformServiceManager();
}

void ServiceManager::setForTesting(ServiceManager* manager) { testManager.store(manager); }

}  // namespace tov
