#include "core/lock.h"

#include "core/owners.h"

#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>

namespace {

/// Tries a lock and gives it back. The analysis does not see the native calls.
bool is_free(utm_mutex_t &mutex) {
    if (pthread_mutex_trylock(&mutex.native) != 0)
        return false;
    pthread_mutex_unlock(&mutex.native);
    return true;
}

bool admits_reader(utm_rwlock_t &lock) {
    if (pthread_rwlock_tryrdlock(&lock.native) != 0)
        return false;
    pthread_rwlock_unlock(&lock.native);
    return true;
}

bool admits_writer(utm_rwlock_t &lock) {
    if (pthread_rwlock_trywrlock(&lock.native) != 0)
        return false;
    pthread_rwlock_unlock(&lock.native);
    return true;
}

TEST(Lock, MutexGuardHoldsToTheEndOfTheBlock) {
    utm_mutex_t mutex;
    mutex.create();
    {
        const mutex_guard lock(mutex);
        EXPECT_FALSE(is_free(mutex));
    }
    EXPECT_TRUE(is_free(mutex));
    mutex.destroy();
}

TEST(Lock, ReadGuardAdmitsReadersAndWriteGuardNobody) {
    utm_rwlock_t rwlock;
    rwlock.create();
    {
        const read_guard lock(rwlock);
        EXPECT_TRUE(admits_reader(rwlock));
        EXPECT_FALSE(admits_writer(rwlock));
    }
    {
        const write_guard lock(rwlock);
        EXPECT_FALSE(admits_reader(rwlock));
        EXPECT_FALSE(admits_writer(rwlock));
    }
    EXPECT_TRUE(admits_writer(rwlock));
    rwlock.destroy();
}

TEST(Heap, HandsOutZeroes) {
    const heap_ptr<int64_t> numbers(heap_allocate<int64_t>(1000));
    ASSERT_NE(numbers, nullptr);
    EXPECT_EQ(std::count(numbers.get(), numbers.get() + 1000, 0), 1000);
}

} // namespace
