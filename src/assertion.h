#ifndef FILTER_COMMON_SRC_ASSERTION_H_
#define FILTER_COMMON_SRC_ASSERTION_H_

// <assert.h> declares the function that reports a failure only if NDEBUG is not defined.
#undef NDEBUG
#include <assert.h>

// The C library's assertion, with two differences. It is active in every kind of build, since
// callers rely on it. It reports the given signature, and the file name without its folder, so that
// the text does not depend on the compiler or on the source folder.
#define FILTERS_ASSERT(expression, signature) FILTERS_ASSERT_AT(expression, __LINE__, signature)

// Like FILTERS_ASSERT, but reports the given line number, because callers may depend on that
// number.
#define FILTERS_ASSERT_AT(expression, line, signature) \
  ((expression) ? static_cast<void>(0) : __assert_fail(#expression, __FILE_NAME__, line, signature))

#endif  // FILTER_COMMON_SRC_ASSERTION_H_
