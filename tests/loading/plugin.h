#ifndef FILTER_COMMON_TESTS_LOADING_PLUGIN_H_
#define FILTER_COMMON_TESTS_LOADING_PLUGIN_H_

// What a module offers that a process loads while it runs, and that brings the library along.

namespace FiltersCommon {
class FiltersSerialized;
class Match;
}  // namespace FiltersCommon

struct Plugin {
  // Sends a group through bytes; answers whether it came back, was valid and printed.
  bool (*roundTrip)();
  // Objects made in the module: of a class of the library and of one of its own.
  FiltersCommon::Match* (*newMatch)();
  FiltersCommon::FiltersSerialized* (*newBuffer)();
  // Whether the module knows the caller's object as a MatchTTL.
  bool (*knowsAsTTL)(const FiltersCommon::Match* match);
  // Lets the library's std::invalid_argument out.
  void (*throws)();
};
extern "C" const Plugin plugin;

#endif  // FILTER_COMMON_TESTS_LOADING_PLUGIN_H_
