/// A Reallocate that a test can make fail.
#ifndef TESTS_SUPPORT_REALLOCATE_FAKE_H
#define TESTS_SUPPORT_REALLOCATE_FAKE_H

namespace Orska::Test {

/// While true every call returns null.
inline bool s_failReallocate = false;

}  // namespace Orska::Test

#endif
