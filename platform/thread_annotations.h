// Annotations with which Clang proves at compile time that locks are used correctly; other
// compilers ignore them.
//
// A header includes this after all others and ends with thread_annotations_end.h, so that a program
// that includes the header gets none of these macros. Each such header defines them again, so this
// has no include guard.
#ifdef __clang__
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
#define SENSORVELA_NO_THREAD_SAFETY_ANALYSIS SENSORVELA_THREAD_ANNOTATION(no_thread_safety_analysis)
