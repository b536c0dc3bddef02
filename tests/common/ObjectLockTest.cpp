#include "common/ObjectLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace tov {
namespace {

// Whether another thread could take the object's lock right now.
bool lockableFromAnotherThread(const void* object) {
    bool taken = false;
    std::thread other([&] {
        std::recursive_mutex& mutex = objectMutexFor(object);
        taken = mutex.try_lock();
        if (taken) mutex.unlock();
    });
    other.join();
    return taken;
}

TEST(ObjectLock, OneObjectAlwaysGetsTheSameMutex) {
    const int object = 0;
    EXPECT_EQ(&objectMutexFor(&object), &objectMutexFor(&object));
}

TEST(ObjectLock, TheLockIsHeldForTheGuardsLifetimeOnly) {
    const int object = 0;
    {
        const ObjectLock lock(&object);
        EXPECT_FALSE(lockableFromAnotherThread(&object));
    }
    EXPECT_TRUE(lockableFromAnotherThread(&object));
}

TEST(ObjectLock, TheHolderMayTakeTheLockAgain) {
    const int object = 0;
    const ObjectLock outer(&object);
    {
        const ObjectLock inner(&object);
        EXPECT_FALSE(lockableFromAnotherThread(&object));
    }
    EXPECT_FALSE(lockableFromAnotherThread(&object));
}

TEST(ObjectLock, NeighbouringObjectsSpreadOverSeveralMutexes) {
    // Objects allocated side by side must not all land on one slot, or every lock of the
    // program would serialise on it.
    std::atomic<int> objects[64];
    const std::recursive_mutex* first = &objectMutexFor(&objects[0]);
    int others = 0;
    for (const auto& object : objects) others += &objectMutexFor(&object) != first ? 1 : 0;
    EXPECT_GT(others, 32);
}

}  // namespace
}  // namespace tov
