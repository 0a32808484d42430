// A process that is not linked with the library loads it, lets it go and loads it again.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "plugin.h"

namespace {

TEST(Reload, TheLibraryWorksAfterItWasLetGo) {
  for (int round = 0; round < 3; ++round) {
    void* plugin = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(plugin, nullptr) << dlerror();
    const auto roundTrip =
        reinterpret_cast<decltype(&pluginRoundTrip)>(dlsym(plugin, "pluginRoundTrip"));
    ASSERT_NE(roundTrip, nullptr) << dlerror();
    EXPECT_TRUE(roundTrip()) << "round " << round;
    ASSERT_EQ(dlclose(plugin), 0) << dlerror();
    ASSERT_EQ(dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "nothing was unloaded";
  }
}

// Everything is resolved while loading, and what is loaded by its own name finds the platform's
// libraries.
TEST(Reload, TheLibraryLoadsByItselfWithEverySymbol) {
  void* library = dlopen(LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  EXPECT_NE(dlsym(library, "newFiltersGroup"), nullptr) << dlerror();
  EXPECT_EQ(dlclose(library), 0) << dlerror();
}

}  // namespace
