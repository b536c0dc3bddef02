#pragma once

// A re-entrant lock tied to an object's address, for code that must not walk a shared
// container while another thread walks it under the same lock.
//
// The locks come from a fixed table of recursive mutexes, chosen by the address. Two
// objects may share a slot; that only makes one thread wait for the other a little longer,
// never lets two threads hold the lock of one object together. Because a slot is
// recursive, a thread that holds one object's lock may take it again, or take the lock of
// another object that happens to share the slot, without blocking itself. What the table
// cannot rule out is a lock-order cycle made by sharing: code that holds two of these
// locks at once could wait on a thread that does the same in the other order. So the rule
// for users is to hold at most one object lock at a time (the collection resets do).

#include <cstddef>
#include <mutex>

namespace tov {

// The mutex that guards the object at this address.
std::recursive_mutex& objectMutexFor(const void* object);

// Holds the object's lock for the guard's lifetime.
class ObjectLock {
public:
    explicit ObjectLock(const void* object) : lock_(objectMutexFor(object)) {}
    ObjectLock(const ObjectLock&) = delete;
    ObjectLock& operator=(const ObjectLock&) = delete;

private:
    std::lock_guard<std::recursive_mutex> lock_;
};

}  // namespace tov
