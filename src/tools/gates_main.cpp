#include "tools/gates_command.h"

int main(int argc, char** argv) { return vorel::tools::run_gates_command(argc, argv); }
