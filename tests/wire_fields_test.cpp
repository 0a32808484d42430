// Compares the table in src/wire_fields.def with the schemas. Only this table decides how the
// library writes and reads bytes. So a wrong number, kind or label in the table would change the
// bytes that other processes get.

#include <filter_common/filter_groups.pb.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;

struct Row {
  int number;
  std::string name;
  std::string kind;
};
using Rows = std::vector<Row>;

// The text that the schema must have for a kind of field: its type, and whether it is repeated.
std::set<std::string> expected(const std::string& kind) {
  if (kind == "number") return {"uint32", "bool"};
  if (kind == "signedNumber") return {"int32"};
  if (kind == "address" || kind == "bytes") return {"bytes"};
  if (kind == "messages") return {"repeated message"};
  return {"repeated uint32"};  // lists of numbers, and sets
}

std::string said(const FieldDescriptor& field) {
  // Lists of bytes are not packed: each value has its own tag.
  EXPECT_FALSE(field.is_packed()) << field.name();
  return std::string(field.is_repeated() ? "repeated " : "") + std::string(field.type_name());
}

void expectRows(const Descriptor& message, const std::multimap<std::string, Rows>& classes,
                std::set<int> known) {
  for (const auto& [name, rows] : classes) {
    int last = 0;
    for (const Row& row : rows) {
      const FieldDescriptor* field = message.FindFieldByNumber(row.number);
      ASSERT_NE(field, nullptr) << name << ' ' << row.number;
      EXPECT_EQ(std::string(field->name()), row.name) << name;
      EXPECT_EQ(expected(row.kind).count(said(*field)), 1u) << name << ' ' << said(*field);
      EXPECT_GT(row.number, last) << name << ": the numbers do not ascend";
      last = row.number;
      known.insert(row.number);
    }
  }
  for (int i = 0; i < message.field_count(); ++i) {
    EXPECT_EQ(known.count(message.field(i)->number()), 1u)
        << "no class writes " << std::string(message.field(i)->full_name());
  }
}

#define FIELD(kind, n, name, member) Row{n, #name, #kind},
#define LIST FIELD
#define INTERFACES(n, vpn, m, port) FIELD(number, n, vpn, ) FIELD(number, m, port, )

TEST(WireFields, AreThoseOfTheSchemas) {
  const std::multimap<std::string, Rows> matches = {
#define FILTERS_MATCH_FIELDS(Class, ...) {#Class, {__VA_ARGS__}},
#include "../src/wire_fields.def"
  };
  const std::multimap<std::string, Rows> actions = {
#define FILTERS_ACTION_FIELDS(Class, ...) {#Class, {__VA_ARGS__}},
#include "../src/wire_fields.def"
  };
  const std::multimap<std::string, Rows> others = {
#define FILTERS_FIELDS(Class, ...) {#Class, {__VA_ARGS__}},
#include "../src/wire_fields.def"
  };
  const Rows entry = {
#define FILTERS_ENTRY_FIELD(constant, kind, n, name) FIELD(kind, n, name, )
#include "../src/wire_fields.def"
  };
  constexpr int kCode = 1;
  expectRows(*FiltersCommon::MatchPB::descriptor(), matches, {kCode});
  expectRows(*FiltersCommon::ActionPB::descriptor(), actions, {kCode});
  expectRows(*FiltersCommon::CounterPB::descriptor(), {*others.find("Counter")}, {});
  expectRows(*FiltersCommon::FiltersGroupPB::descriptor(), {*others.find("FiltersGroup")}, {});
  expectRows(*FiltersCommon::FiltersEntryPB::descriptor(), {{"FiltersEntry", entry}}, {});
}

}  // namespace
