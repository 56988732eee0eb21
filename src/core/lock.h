#pragma once
/// Locks that clang's thread-safety analysis understands.
///
/// The types wrap the POSIX locks one to one. They have no constructor and no destructor: each lock
/// is a global that `daemon` creates and destroys by name, in a fixed order.

#include <pthread.h>

#if defined(__clang__)
#define UTM_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define UTM_THREAD_ANNOTATION(x)
#endif

/// The data is read and written only while the named lock is held.
#define UTM_GUARDED_BY(lock) UTM_THREAD_ANNOTATION(guarded_by(lock))
/// The caller holds the named lock.
#define UTM_REQUIRES(lock) UTM_THREAD_ANNOTATION(requires_capability(lock))
/// The function takes the named lock itself: a caller that held it would wait for itself.
#define UTM_EXCLUDES(...) UTM_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define UTM_CAPABILITY(name) UTM_THREAD_ANNOTATION(capability(name))
#define UTM_SCOPED_CAPABILITY UTM_THREAD_ANNOTATION(scoped_lockable)
#define UTM_ACQUIRE(...) UTM_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define UTM_ACQUIRE_SHARED(...) UTM_THREAD_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define UTM_RELEASE(...) UTM_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define UTM_RELEASE_GENERIC(...) UTM_THREAD_ANNOTATION(release_generic_capability(__VA_ARGS__))

/// A plain, non-recursive mutex.
struct UTM_CAPABILITY("mutex") utm_mutex_t {
    pthread_mutex_t native;

    void create() { pthread_mutex_init(&native, nullptr); }
    void destroy() { pthread_mutex_destroy(&native); }
    void lock() UTM_ACQUIRE() { pthread_mutex_lock(&native); }
    void unlock() UTM_RELEASE() { pthread_mutex_unlock(&native); }
};

/// A read-write lock.
struct UTM_CAPABILITY("rwlock") utm_rwlock_t {
    pthread_rwlock_t native;

    void create() { pthread_rwlock_init(&native, nullptr); }
    void destroy() { pthread_rwlock_destroy(&native); }
    void lock() UTM_ACQUIRE() { pthread_rwlock_wrlock(&native); }
    void lock_shared() UTM_ACQUIRE_SHARED() { pthread_rwlock_rdlock(&native); }
    void unlock() UTM_RELEASE_GENERIC() { pthread_rwlock_unlock(&native); }
};

/// Holds a mutex to the end of the block, so that every early return releases it.
class UTM_SCOPED_CAPABILITY mutex_guard {
public:
    explicit mutex_guard(utm_mutex_t &mutex) UTM_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~mutex_guard() UTM_RELEASE() { mutex_.unlock(); }
    mutex_guard(const mutex_guard &) = delete;
    mutex_guard &operator=(const mutex_guard &) = delete;

private:
    utm_mutex_t &mutex_;
};

/// Holds a read-write lock for reading to the end of the block.
class UTM_SCOPED_CAPABILITY read_guard {
public:
    explicit read_guard(utm_rwlock_t &lock) UTM_ACQUIRE_SHARED(lock) : lock_(lock) {
        lock_.lock_shared();
    }
    ~read_guard() UTM_RELEASE_GENERIC() { lock_.unlock(); }
    read_guard(const read_guard &) = delete;
    read_guard &operator=(const read_guard &) = delete;

private:
    utm_rwlock_t &lock_;
};

/// Holds a read-write lock for writing to the end of the block.
class UTM_SCOPED_CAPABILITY write_guard {
public:
    explicit write_guard(utm_rwlock_t &lock) UTM_ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
    ~write_guard() UTM_RELEASE_GENERIC() { lock_.unlock(); }
    write_guard(const write_guard &) = delete;
    write_guard &operator=(const write_guard &) = delete;

private:
    utm_rwlock_t &lock_;
};
