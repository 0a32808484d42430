#ifndef FILTER_COMMON_TESTS_LOADING_PLUGIN_H_
#define FILTER_COMMON_TESTS_LOADING_PLUGIN_H_

// The functions of a module that a process loads while it runs, and that brings the library along.

namespace FiltersCommon {
class Action;
class FiltersSerialized;
class Match;
}  // namespace FiltersCommon

extern "C" {

// Sends a group through bytes; answers whether it came back, was valid and printed.
bool pluginRoundTrip();

// Objects made in the module: of a class with and without code in the library, and of a class of
// the module's own. The caller deletes them.
FiltersCommon::Match* pluginNewMatch();
FiltersCommon::Action* pluginNewAction();
FiltersCommon::FiltersSerialized* pluginNewBuffer();

// Whether the module knows the caller's object as a MatchTTL.
bool pluginKnowsAsTTL(const FiltersCommon::Match* match);

// Lets the library's std::invalid_argument out.
void pluginThrow();
}

#endif  // FILTER_COMMON_TESTS_LOADING_PLUGIN_H_
