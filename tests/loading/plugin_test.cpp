// A program and a module that both use the library, loaded so that neither sees the other's names:
// what one makes, the other must know by type.

#include <dlfcn.h>
#include <filter_common/filter_entries.h>
#include <filter_common/filter_serialized.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <typeinfo>

#include "plugin.h"

namespace {

using namespace FiltersCommon;

class PluginTest : public testing::Test {
 protected:
  template <class Function>
  Function* function(const char* name) {
    void* address = dlsym(plugin_, name);
    EXPECT_NE(address, nullptr) << dlerror();
    return reinterpret_cast<Function*>(address);
  }

  void SetUp() override { ASSERT_NE(plugin_, nullptr) << dlerror(); }
 private:
  void* plugin_ = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
};

TEST_F(PluginTest, KnowsTheTypesOfTheModulesObjects) {
  const std::unique_ptr<Match> match(function<Match*()>("pluginNewMatch")());
  const Match& matched = *match;  // of a reference, whose typeid computes nothing else
  EXPECT_EQ(typeid(matched), typeid(MatchTTL));
  EXPECT_NE(dynamic_cast<MatchTTL*>(match.get()), nullptr);
  EXPECT_EQ(dynamic_cast<MatchVrfId*>(match.get()), nullptr);

  const std::unique_ptr<Action> action(function<Action*()>("pluginNewAction")());
  const Action& acted = *action;
  EXPECT_EQ(typeid(acted), typeid(ActionDeny));
  EXPECT_NE(dynamic_cast<ActionDeny*>(action.get()), nullptr);
}

TEST_F(PluginTest, ItsObjectsAreKnownToTheModule) {
  const auto knowsAsTTL = function<bool(const Match*)>("pluginKnowsAsTTL");
  EXPECT_TRUE(knowsAsTTL(std::make_unique<MatchTTL>(1).get()));
  EXPECT_FALSE(knowsAsTTL(std::make_unique<MatchAll>().get()));
}

TEST_F(PluginTest, FillsABufferOfTheModulesOwnClass) {
  const std::unique_ptr<FiltersSerialized> buffer(
      function<FiltersSerialized*()>("pluginNewBuffer")());
  const FiltersSerialized& filled = *buffer;
  EXPECT_NE(typeid(filled), typeid(FiltersSerialized));
  FiltersEntry(1).serialize(buffer.get());
  EXPECT_EQ(FiltersEntry(*buffer), FiltersEntry(1));
}

TEST_F(PluginTest, CatchesWhatTheLibraryThrowsThroughTheModule) {
  EXPECT_THROW(function<void()>("pluginThrow")(), std::invalid_argument);
}

}  // namespace
