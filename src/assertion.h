#ifndef FILTER_COMMON_SRC_ASSERTION_H_
#define FILTER_COMMON_SRC_ASSERTION_H_

// The reporting function is declared only where assertions are on.
#undef NDEBUG
#include <assert.h>

// The C library's assertion, with two differences: it holds in every kind of build, since callers
// rely on it, and it reports the bare file name and the given signature, whatever the compiler
// would print and wherever the sources lie.
#define FILTERS_ASSERT(expression, signature) FILTERS_ASSERT_AT(expression, __LINE__, signature)

// The same, with the line that callers know it by.
#define FILTERS_ASSERT_AT(expression, line, signature) \
  ((expression) ? static_cast<void>(0) : __assert_fail(#expression, __FILE_NAME__, line, signature))

#endif  // FILTER_COMMON_SRC_ASSERTION_H_
