#include "bench/prefix_modules.h"

#include <iterator>

namespace vorel::bench {
namespace {

constexpr ModuleTransition two_orders_transitions[] = {
    {'a', "l", "m"}, {'b', "m", "h"}, {'b', "l", "n"}, {'a', "n", "h"}};
constexpr ModuleEvent two_orders_events[] = {{0, "0"}, {1, "1"}, {2, "0"}, {3, "3", 1}};

constexpr ModuleTransition join_transitions[] = {
    {'a', "l", "m"}, {'b', "k", "n"}, {'c', "m n", "h"}};
constexpr ModuleEvent join_events[] = {{0, "0"}, {1, "1"}, {2, "2 3"}};

constexpr ModuleTransition exclusion_transitions[] = {
    {'a', "x y", "x1"}, {'b', "x1", "x2 y"}, {'c', "z y", "z1"}, {'d', "z1", "z2 y"}};
constexpr ModuleEvent exclusion_events[] = {
    {0, "0 1"},  // 3: x1
    {1, "3"},    // 4: x2, 5: y
    {2, "2 1"},  // 6: z1
    {3, "6"},    // 7: z2, 8: y
    {2, "2 5"},  // 9: z1, after the other thread
    {3, "9"},    // 10: z2, 11: y
    {0, "0 8"},  // 12: x1, after the other thread
    {1, "12", 5},
};

constexpr ModuleTransition three_orders_transitions[] = {
    {'a', "l", "m1"}, {'b', "m1", "m2"}, {'c', "m2", "h"},  {'b', "l", "n1"}, {'c', "n1", "n2"},
    {'a', "n2", "h"}, {'c', "l", "o1"},  {'a', "o1", "o2"}, {'b', "o2", "h"}};
constexpr ModuleEvent three_orders_events[] = {
    {0, "0"}, {1, "1"}, {2, "2"}, {3, "0"}, {4, "4"}, {5, "5", 2}, {6, "0"}, {7, "7"}, {8, "8", 2}};

constexpr ModuleTransition two_locks_transitions[] = {{'a', "x f", "x1"},    {'b', "x1 g", "x2"},
                                                      {'c', "x2", "x3 f g"}, {'d', "y g", "y1"},
                                                      {'e', "y1 f", "y2"},   {'f', "y2", "y3 f g"}};
constexpr ModuleEvent two_locks_events[] = {
    {0, "0 2"},    // 4: x1
    {1, "4 3"},    // 5: x2
    {2, "5"},      // 6: x3, 7: f, 8: g
    {3, "1 3"},    // 9: y1
    {4, "9 2"},    // 10: y2
    {5, "10"},     // 11: y3, 12: f, 13: g
    {3, "1 8"},    // 14: y1, after the other thread
    {4, "14 7"},   // 15: y2
    {5, "15"},     // 16: y3, 17: f, 18: g
    {0, "0 12"},   // 19: x1, after the other thread
    {1, "19 13"},  // 20: x2
    {2, "20", 8},
};

constexpr Module module_table[] = {
    {"two_orders", "l", "2", two_orders_transitions, two_orders_events},
    {"join", "l k", "4", join_transitions, join_events},
    {"exclusion", "x y z", "4 10 11", exclusion_transitions, exclusion_events},
    {"three_orders", "l", "3", three_orders_transitions, three_orders_events},
    {"two_locks", "x y f g", "6 16 17 18", two_locks_transitions, two_locks_events},
};
static_assert(std::size(module_table) == module_kind_count);

}  // namespace

const Module& module_of(ModuleKind kind) { return module_table[static_cast<std::size_t>(kind)]; }

}  // namespace vorel::bench
