// Attributes that state which lock guards what. clang checks them with -Wthread-safety; other compilers ignore them.
//
//     class ZR_CAPABILITY("mutex") CMutex { ... };      // objects of this class are locks
//     int count_ ZR_GUARDED_BY(mutex_);                 // must not be used unless mutex_ is held
//     void Add() ZR_REQUIRES(mutex_);                   // callers must hold mutex_
//
// A function that clang cannot follow is marked ZR_UNCHECKED: its body is not analysed. A lambda is analysed as a
// function of its own, so it does not know the locks of the function around it. Such a lambda calls a function that is
// marked ZR_ASSERT_HELD.

#pragma once

#if defined(__clang__)
#define ZR_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define ZR_THREAD_ATTRIBUTE(attribute)
#endif

// For classes: a lock, and a guard that holds a lock for a scope.
#define ZR_CAPABILITY(name) ZR_THREAD_ATTRIBUTE(capability(name))
#define ZR_SCOPED_CAPABILITY ZR_THREAD_ATTRIBUTE(scoped_lockable)

// For fields.
#define ZR_GUARDED_BY(lock) ZR_THREAD_ATTRIBUTE(guarded_by(lock))

// For functions. ZR_TRY_ACQUIRE's first argument is the result that means success. ZR_ASSERT_HELD states that the
// object itself is a lock that is held from here on.
#define ZR_REQUIRES(...) ZR_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ZR_ACQUIRE(...) ZR_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ZR_TRY_ACQUIRE(...) ZR_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define ZR_RELEASE(...) ZR_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ZR_RETURNS_LOCK(lock) ZR_THREAD_ATTRIBUTE(lock_returned(lock))
#define ZR_ASSERT_HELD ZR_THREAD_ATTRIBUTE(assert_capability(this))
#define ZR_UNCHECKED ZR_THREAD_ATTRIBUTE(no_thread_safety_analysis)
