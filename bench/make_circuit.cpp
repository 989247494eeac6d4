// bench/make_circuit.cpp - writes circuits of any size as *.g files.
// Usage: make_circuit FAMILY N   (to the standard output)
//   fork_join   n handshakes that rise in parallel, then fall in parallel: no coding conflict
//   handshakes  n handshakes that go through a whole cycle in parallel: conflicts
//   pipeline    n stages in a row, each a C-element: no coding conflict
//   ring        n cells in a ring with one token that goes round: no coding conflict
#include <cstdio>
#include <cstdlib>
#include <functional>
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

// All requests start with go+, `done` waits for all acknowledgements.
void write_fork_join(unsigned n) {
  write_signals(".inputs", "go", "a", n);
  write_signals(".outputs", "done", "r", n);
  cout << ".graph\n";
  for (const char* sign : {"+", "-"}) {
    for_each_number(n, [sign](const std::string& i) {
      cout << "go" << sign << " r" << i << sign << "\nr" << i << sign << " a" << i << sign << "\na"
           << i << sign << " done" << sign << '\n';
    });
  }
  cout << "done+ go-\ndone- go+\n.marking { <done-,go+> }\n";
}

void write_handshakes(unsigned n) {
  write_signals(".inputs", "go", "a", n);
  write_signals(".outputs", "done", "r", n);
  cout << ".graph\n";
  for_each_number(n, [](const std::string& i) {
    cout << "go+ r" << i << "+\nr" << i << "+ a" << i << "+\na" << i << "+ r" << i << "-\nr" << i
         << "- a" << i << "-\na" << i << "- done+\n";
  });
  cout << "done+ go-\ngo- done-\ndone- go+\n.marking { <done-,go+> }\n";
}

// A stage takes what comes from the left once what it had has gone to the right.
void write_pipeline(unsigned n) {
  const std::string last = name("c", n + 1);
  cout << ".inputs c0 " << last << "\n.outputs";
  for (unsigned i = 1; i <= n; ++i) cout << ' ' << name("c", i);
  cout << "\n.graph\n";
  for (unsigned i = 0; i <= n; ++i) {
    const std::string stage = name("c", i), next = name("c", i + 1);
    cout << stage << "+ " << next << "+\n" << stage << "- " << next << "-\n";
    cout << next << "+ " << stage << "-\n" << next << "- " << stage << "+\n";
  }
  cout << ".marking {";
  for (unsigned i = 0; i <= n; ++i)
    cout << " <" << name("c", i + 1) << "-," << name("c", i) << "+>";
  cout << " }\n";
}

// A cell follows the one before it once the one after it has the opposite value.
void write_ring(unsigned n) {
  cout << ".outputs";
  for (unsigned i = 0; i < n; ++i) cout << ' ' << name("c", i);
  cout << "\n.graph\n";
  for (unsigned i = 0; i < n; ++i) {
    const std::string cell = name("c", i);
    const std::string before = name("c", (i + n - 1) % n), after = name("c", (i + 1) % n);
    cout << before << "+ " << cell << "+\n" << before << "- " << cell << "-\n";
    cout << after << "- " << cell << "+\n" << after << "+ " << cell << "-\n";
  }
  cout << ".marking { <c0+,c1+> <" << name("c", n - 1) << "-,c0->";
  for (unsigned i = 1; i + 1 < n; ++i)
    cout << " <" << name("c", i + 1) << "-," << name("c", i) << "+>";
  cout << " }\n";
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
  std::cerr << "usage: make_circuit fork_join|handshakes|pipeline|ring N\n";
  return 1;
}
