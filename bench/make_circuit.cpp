// bench/make_circuit.cpp - writes circuits of any size as *.g files.
// Usage: make_circuit FAMILY N   (to the standard output)
//   fork_join   n handshakes that rise in parallel, then fall in parallel: no coding conflict
//   handshakes  n handshakes that go through a whole cycle in parallel: conflicts
//   pipeline    n stages in a row, each a C-element: no coding conflict
//   ring        n cells in a ring with one token that goes round: no coding conflict
//   tokens      n cells in a ring with a token in every fourth: no coding conflict
//   tree        n inputs that C-elements join two by two: no coding conflict
//   lone_conflict   fork_join next to a controller of a bus, which has a conflict
// and for the resolution of conflicts:
//   controllers     n controllers of a bus side by side, each with a conflict of its own
//   sequencer       n handshakes one after another within another: all look alike between them
//   busy_ring       n cells in a ring, each with a handshake when it has the token: n conflicts
//   busy_pipeline   n stages in a row, each with a handshake when it has taken something: n
//   conflicts
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <iostream>
#include <string>
#include <string_view>

namespace {

using std::cout;

std::string name(const char* signal, unsigned number) { return signal + std::to_string(number); }

void for_each_number(unsigned n, const std::function<void(const std::string&)>& function) {
  for (unsigned i = 0; i < n; ++i) function(std::to_string(i));
}

void write_signals(const char* kind, const char* first, const char* numbered, unsigned n) {
  cout << kind << ' ' << first;
  for (unsigned i = 0; i < n; ++i) cout << ' ' << name(numbered, i);
  cout << '\n';
}

// Signals 0 to n-1 of each name.
void write_numbered(const char* kind, std::initializer_list<const char*> signals, unsigned n) {
  cout << kind;
  for (const char* signal : signals) {
    for_each_number(n, [signal](const std::string& i) { cout << ' ' << signal << i; });
  }
  cout << '\n';
}

// A whole handshake between two transitions.
void write_handshake(const std::string& before, const std::string& i, const std::string& after) {
  cout << before << " r" << i << "+\nr" << i << "+ a" << i << "+\na" << i << "+ r" << i << "-\nr"
       << i << "- a" << i << "-\na" << i << "- " << after << '\n';
}

void write_fork_join_signals(unsigned n) {
  write_signals(".inputs", "go", "a", n);
  write_signals(".outputs", "done", "r", n);
}

// All requests start with go+, `done` waits for all acknowledgements.
void write_fork_join_arcs(unsigned n) {
  for (const char* sign : {"+", "-"}) {
    for_each_number(n, [sign](const std::string& i) {
      cout << "go" << sign << " r" << i << sign << "\nr" << i << sign << " a" << i << sign << "\na"
           << i << sign << " done" << sign << '\n';
    });
  }
  cout << "done+ go-\ndone- go+\n";
}

void write_fork_join(unsigned n) {
  write_fork_join_signals(n);
  cout << ".graph\n";
  write_fork_join_arcs(n);
  cout << ".marking { <done-,go+> }\n";
}

void write_handshakes(unsigned n) {
  write_signals(".inputs", "go", "a", n);
  write_signals(".outputs", "done", "r", n);
  cout << ".graph\n";
  for_each_number(n, [](const std::string& i) { write_handshake("go+", i, "done+"); });
  cout << "done+ go-\ngo- done-\ndone- go+\n.marking { <done-,go+> }\n";
}

// A stage takes what comes from the left once what it had has gone to the right; if it is busy it
// goes through a handshake before it passes it on.
void write_stages(unsigned n, bool busy) {
  const std::string last = name("c", n + 1);
  cout << ".inputs c0 " << last;
  for (unsigned i = 1; i <= n && busy; ++i) cout << ' ' << name("a", i);
  cout << "\n.outputs";
  for (unsigned i = 1; i <= n; ++i) cout << ' ' << name("c", i);
  for (unsigned i = 1; i <= n && busy; ++i) cout << ' ' << name("r", i);
  cout << "\n.graph\n";
  for (unsigned i = 0; i <= n; ++i) {
    const std::string stage = name("c", i), next = name("c", i + 1);
    if (busy && i > 0) {
      write_handshake(stage + "+", std::to_string(i), next + "+");
    } else {
      cout << stage << "+ " << next << "+\n";
    }
    cout << stage << "- " << next << "-\n" << next << "+ " << stage << "-\n";
    cout << next << "- " << stage << "+\n";
  }
  cout << ".marking {";
  for (unsigned i = 0; i <= n; ++i)
    cout << " <" << name("c", i + 1) << "-," << name("c", i) << "+>";
  cout << " }\n";
}
void write_pipeline(unsigned n) { write_stages(n, false); }
void write_busy_pipeline(unsigned n) { write_stages(n, true); }

// A cell follows the one before it once the one after it has the opposite value; at first every
// so-manieth is high.
void write_cells(unsigned n, unsigned distance) {
  cout << ".outputs";
  for (unsigned i = 0; i < n; ++i) cout << ' ' << name("c", i);
  cout << "\n.graph\n";
  for (unsigned i = 0; i < n; ++i) {
    const std::string cell = name("c", i);
    const std::string before = name("c", (i + n - 1) % n), after = name("c", (i + 1) % n);
    cout << before << "+ " << cell << "+\n" << before << "- " << cell << "-\n";
    cout << after << "- " << cell << "+\n" << after << "+ " << cell << "-\n";
  }
  cout << ".marking {";
  const auto is_high = [&](unsigned i) { return i % distance == 0 && i + 2 < n; };
  for (unsigned i = 0; i < n; ++i) {
    const std::string cell = name("c", i), after = name("c", (i + 1) % n);
    if (is_high(i))
      cout << " <" << cell << "+," << after << "+>";
    else if (is_high((i + 1) % n))
      cout << " <" << cell << "-," << after << "->";
    else
      cout << " <" << after << "-," << cell << "+>";
  }
  cout << " }\n";
}
void write_ring(unsigned n) { write_cells(n, n); }
void write_tokens(unsigned n) { write_cells(n, 4); }

// Node k joins the nodes 2k and 2k+1, those from n on are inputs.
void write_tree(unsigned n) {
  const auto node = [n](unsigned k) { return name(k < n ? "c" : "a", k); };
  cout << ".inputs";
  for (unsigned k = n; k < 2 * n; ++k) cout << ' ' << node(k);
  cout << "\n.outputs";
  for (unsigned k = 1; k < n; ++k) cout << ' ' << node(k);
  cout << "\n.graph\n";
  for (const char* sign : {"+", "-"})
    for (unsigned k = 2; k < 2 * n; ++k)
      cout << node(k) << sign << ' ' << node(k / 2) << sign << '\n';
  for (unsigned k = n; k < 2 * n; ++k) cout << "c1+ " << node(k) << "-\nc1- " << node(k) << "+\n";
  cout << ".marking {";
  for (unsigned k = n; k < 2 * n; ++k) cout << " <c1-," << node(k) << "+>";
  cout << " }\n";
}

void write_controller_signals(unsigned n) {
  write_numbered(".inputs", {"dsr", "ldtack"}, n);
  write_numbered(".outputs", {"lds", "d", "dtack"}, n);
}

// The read cycle of examples/vme_read.g, n times.
void write_controller_arcs(unsigned n) {
  constexpr const char* arcs[][2] = {
      {"dsr+", "lds+"},   {"lds+", "ldtack+"}, {"ldtack+", "d+"},   {"d+", "dtack+"},
      {"dtack+", "dsr-"}, {"dsr-", "d-"},      {"d-", "dtack-"},    {"d-", "lds-"},
      {"dtack-", "dsr+"}, {"lds-", "ldtack-"}, {"ldtack-", "lds+"},
  };
  const auto edge = [](std::string_view text, const std::string& i) {
    return std::string(text.substr(0, text.size() - 1)) + i + text.back();
  };
  for_each_number(n, [&](const std::string& i) {
    for (const auto& [from, to] : arcs) cout << edge(from, i) << ' ' << edge(to, i) << '\n';
  });
}

void write_controller_tokens(unsigned n) {
  for_each_number(n, [](const std::string& i) {
    cout << " <dtack" << i << "-,dsr" << i << "+> <ldtack" << i << "-,lds" << i << "+>";
  });
}

void write_controllers(unsigned n) {
  write_controller_signals(n);
  cout << ".graph\n";
  write_controller_arcs(n);
  cout << ".marking {";
  write_controller_tokens(n);
  cout << " }\n";
}

void write_lone_conflict(unsigned n) {
  write_fork_join_signals(n);
  write_controller_signals(1);
  cout << ".graph\n";
  write_fork_join_arcs(n);
  write_controller_arcs(1);
  cout << ".marking { <done-,go+>";
  write_controller_tokens(1);
  cout << " }\n";
}

void write_sequencer(unsigned n) {
  write_signals(".inputs", "go", "a", n);
  write_signals(".outputs", "done", "r", n);
  cout << ".graph\n";
  for (unsigned i = 0; i < n; ++i) {
    write_handshake(i == 0 ? "go+" : name("p", i), std::to_string(i),
                    i + 1 == n ? "done+" : name("p", i + 1));
  }
  cout << "done+ go-\ngo- done-\ndone- go+\n.marking { <done-,go+> }\n";
}

// The signal of the cell that has the token is high; before and after the handshake nothing
// differs.
void write_busy_ring(unsigned n) {
  write_numbered(".inputs", {"a"}, n);
  write_numbered(".outputs", {"c", "r"}, n);
  cout << ".graph\n";
  for (unsigned i = 0; i < n; ++i) {
    const std::string cell = name("c", i), next = name("c", (i + 1) % n);
    write_handshake(cell + "+", std::to_string(i), next + "+");
    cout << next << "+ " << cell << "-\n" << cell << "- " << name("c", (i + 2) % n) << "+\n";
  }
  cout << ".marking { <a" << n - 1 << "-,c0+> <" << name("c", n - 2) << "-,c0+> }\n";
}

struct Family {
  std::string_view name;
  unsigned least;
  void (*write)(unsigned);
};
constexpr Family families[] = {
    {"fork_join", 1, write_fork_join},
    {"handshakes", 1, write_handshakes},
    {"pipeline", 1, write_pipeline},
    {"ring", 3, write_ring},
    {"tokens", 4, write_tokens},
    {"tree", 2, write_tree},
    {"controllers", 1, write_controllers},
    {"sequencer", 1, write_sequencer},
    {"busy_ring", 3, write_busy_ring},
    {"busy_pipeline", 1, write_busy_pipeline},
    {"lone_conflict", 1, write_lone_conflict},
};

}  // namespace

int main(int argc, char** argv) {
  const long n = argc == 3 ? std::strtol(argv[2], nullptr, 10) : 0;
  for (const Family& family : families) {
    if (argc != 3 || family.name != argv[1] || n < family.least || n > 1'000'000) continue;
    cout << ".model " << family.name << n << '\n';
    family.write(static_cast<unsigned>(n));
    cout << ".end\n" << std::flush;
    return cout ? 0 : 1;
  }
  std::cerr << "usage: make_circuit FAMILY N, where FAMILY is one of";
  for (const Family& family : families) std::cerr << ' ' << family.name;
  std::cerr << '\n';
  return 1;
}
