// A process loads a module that uses the library, unloads the module and loads it again. The
// process and the module do not see each other's symbols. But they recognise each other's types in
// casts and exceptions.

#include <dlfcn.h>
#include <filter_common/filter_matches.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace FiltersCommon;

template <class F>
F* find(void* module, const char* name) {
  return reinterpret_cast<F*>(dlsym(module, name));
}

TEST(Reload, TheLibraryWorksAfterItWasLetGoAndSharesItsTypes) {
  for (int round = 0; round < 3; ++round) {
    void* module = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    EXPECT_TRUE(find<bool()>(module, "roundTrip")()) << round;
    const MatchTTL ttl(1);
    EXPECT_TRUE(find<bool(const Match*)>(module, "knowsAsTTL")(&ttl));
    EXPECT_THROW(find<void()>(module, "refuse")(), std::invalid_argument);
    ASSERT_EQ(dlclose(module), 0) << dlerror();
    ASSERT_EQ(dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "nothing was unloaded";
  }
}

}  // namespace
