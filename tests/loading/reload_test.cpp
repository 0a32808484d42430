// A process that is not linked with the library loads it, lets it go and loads it again.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "plugin.h"

namespace {

TEST(Reload, TheLibraryWorksAfterItWasLetGo) {
  for (int round = 0; round < 3; ++round) {
    void* module = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    EXPECT_TRUE(static_cast<const Plugin*>(dlsym(module, "plugin"))->roundTrip()) << round;
    ASSERT_EQ(dlclose(module), 0) << dlerror();
    ASSERT_EQ(dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "nothing was unloaded";
  }
}

// Everything is resolved while loading, and what is loaded by its own name finds the platform's
// libraries.
TEST(Reload, TheLibraryLoadsByItselfWithEverySymbol) {
  void* library = dlopen(LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  EXPECT_NE(dlsym(library, "newFiltersGroup"), nullptr) << dlerror();
}

}  // namespace
