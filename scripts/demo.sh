#!/usr/bin/env bash
# Builds the program and shows what it does on small examples.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-dependencies.sh
echo "Building vorel and its companions in build/ ..."
[ -f build/CMakeCache.txt ] || cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target vorel vorel-unfold vorel-gates vorel-verify vorel-flow -- --quiet

explain() { printf '\n----------------------------------------------------------------\n%s\n' "$1"; }
show() {
  printf '\n$ %s\n' "$*"
  "$@"
  printf '\n'
}

explain 'One command from a Signal Transition Graph to a circuit that is proved right, with a report to look at.'
show build/vorel-flow examples/vme_read.g -o build/vme_read
echo 'The report is build/vme_read/report.html. What follows are the programs behind it, one by one.'

explain 'The controller of a bus interface, as a Signal Transition Graph in a text file. First comes a finite
prefix of its unfolding, with conditions (B), events (E), cut-offs (C) and arcs; then the question
whether the circuit can get stuck, which goes to a SAT solver.'
show cat examples/vme_read.g
show build/vorel-unfold examples/vme_read.g build/vme_read.unf.pnml
show build/vorel -D build/vme_read.unf.pnml

explain 'Four philosophers sit around a table, with one fork between each two neighbours. Each takes one
fork (take), then the other (both), eats, and puts both back (put). Can they get stuck?'
show build/vorel -D examples/philosophers4.unf.pnml
echo 'The line under "SOLUTION 0" lists transitions in the order in which they fire from the initial
marking. After them each philosopher holds one fork and waits for the other for ever: a deadlock.
The program has replayed the trace by the token game before printing it.'

explain 'An output file whose name ends in .xml gets the answer in a form for other programs. With -f the
trace is as short as can be: four philosophers need four steps to get stuck.'
show build/vorel -D -f examples/philosophers4.unf.pnml build/demo.xml
show cat build/demo.xml

explain 'From a Signal Transition Graph to a circuit. The bus controller has two states with one code in which
it does different things next, a conflict: no circuit can tell them apart.'
show build/vorel -C -f build/vme_read.unf.pnml
explain 'With -R -f a new signal is put where it resolves the conflict at the least cost. The STG is written as
vorel.g and its prefix as vorel.mci; the warning is about the old format of the latter.'
cd build
show ./vorel -R -f vme_read.unf.pnml || [ $? -eq 1 ]
show cat vorel.g
explain 'Each output and internal signal gets an equation over the signals of its context, with a quote behind
what is inverted. With an output file named .v they are written as a Verilog module.'
show ./vorel-unfold vorel.g vme_read_resolved.unf.pnml
show ./vorel -E vme_read_resolved.unf.pnml
show ./vorel -E vme_read_resolved.unf.pnml vme_read.v
show cat vme_read.v
explain 'With -T each signal becomes a gate or latch of a library, here the built-in one. A function that no gate has
is decomposed by a new signal. The STG with all its signals is written as vorel.g again.'
show ./vorel -T vme_read_resolved.unf.pnml vme_read_mapped.v || [ $? -eq 1 ]
show cat vme_read_mapped.v
explain 'vorel-verify proves that the netlist is right, whatever time its gates take: it unfolds it together with the
Signal Transition Graph, and asks of all states at once whether outputs change only where they may, no
gate is interrupted, and all that is due comes.'
show ./vorel-verify vorel.g vme_read_mapped.v
explain 'A testbench plays the STG and has each gate take a random time, another one at each edge. It complains of
any edge that the STG does not allow, of one that does not come, and of a gate that is disabled.'
show ./vorel-gates --testbench vorel.g vme_read_mapped.v simulation.v
show iverilog -o simulation vme_read_mapped.v simulation.v
show vvp -n simulation +seed=1 +edges=20 +trace
show vvp -n simulation +seed=2 +edges=10000
explain 'With an OR where there was an AND:'
sed 's/and2:/or2:/' vme_read_mapped.v >wrong.v
show iverilog -o simulation wrong.v simulation.v
show vvp -n simulation
cd ..
explain 'A C-element of simple gates computes the right function, and yet is wrong: when the environment is fast,
c falls again before the gates that are to keep it have noticed that it has risen.'
show cat examples/celement_gates.v
show build/vorel-verify examples/celement.g examples/celement_gates.v || [ $? -eq 3 ]
