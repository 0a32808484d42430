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

TEST(Plugin, SharesTypesBuffersAndExceptionsWithItsProgram) {
  void* module = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << dlerror();
  const auto& offered = *static_cast<const Plugin*>(dlsym(module, "plugin"));

  const std::unique_ptr<Match> made(offered.newMatch());
  const Match& match = *made;  // of a reference, whose typeid computes nothing else
  EXPECT_EQ(typeid(match), typeid(MatchTTL));
  EXPECT_NE(dynamic_cast<const MatchTTL*>(&match), nullptr);
  EXPECT_EQ(dynamic_cast<const MatchVrfId*>(&match), nullptr);
  EXPECT_TRUE(offered.knowsAsTTL(std::make_unique<MatchTTL>(1).get()));
  EXPECT_FALSE(offered.knowsAsTTL(std::make_unique<MatchAll>().get()));

  const std::unique_ptr<FiltersSerialized> buffer(offered.newBuffer());
  FiltersEntry(1).serialize(buffer.get());
  EXPECT_EQ(FiltersEntry(*buffer), FiltersEntry(1));
  EXPECT_THROW(offered.throws(), std::invalid_argument);
}

}  // namespace
