// Claims about locks that clang checks with -Wthread-safety. Other compilers see nothing.

#pragma once

#if defined(__clang__)
#define ZR_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define ZR_THREAD_ATTRIBUTE(attribute)
#endif

#define ZR_CAPABILITY(name) ZR_THREAD_ATTRIBUTE(capability(name))
#define ZR_SCOPED_CAPABILITY ZR_THREAD_ATTRIBUTE(scoped_lockable)
#define ZR_GUARDED_BY(lock) ZR_THREAD_ATTRIBUTE(guarded_by(lock))
#define ZR_REQUIRES(...) ZR_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ZR_ACQUIRE(...) ZR_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ZR_TRY_ACQUIRE(...) ZR_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define ZR_RELEASE(...) ZR_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ZR_RETURNS_LOCK(lock) ZR_THREAD_ATTRIBUTE(lock_returned(lock))
#define ZR_ASSERT_HELD ZR_THREAD_ATTRIBUTE(assert_capability(this))
#define ZR_UNCHECKED ZR_THREAD_ATTRIBUTE(no_thread_safety_analysis)
