// The annotations by which Clang proves the lock discipline; other compilers read past them.
//
// A header includes this last of all and ends with thread_annotations_end.h, so that a program that
// includes it gets none of these macros. There is no include guard for that reason.
#if defined(__clang__)
#define SENSORVELA_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define SENSORVELA_THREAD_ANNOTATION(x)
#endif
#define SENSORVELA_CAPABILITY(name) SENSORVELA_THREAD_ANNOTATION(capability(name))
#define SENSORVELA_SCOPED_CAPABILITY SENSORVELA_THREAD_ANNOTATION(scoped_lockable)
#define SENSORVELA_GUARDED_BY(lock) SENSORVELA_THREAD_ANNOTATION(guarded_by(lock))
#define SENSORVELA_ACQUIRED_BEFORE(...) SENSORVELA_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
#define SENSORVELA_ACQUIRE(...) SENSORVELA_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define SENSORVELA_RELEASE(...) SENSORVELA_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define SENSORVELA_REQUIRES(...) SENSORVELA_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define SENSORVELA_EXCLUDES(...) SENSORVELA_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
