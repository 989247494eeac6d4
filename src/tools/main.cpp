#include "tools/unfold_command.h"

int main(int argc, char** argv) { return vorel::tools::run_unfold_command(argc, argv); }
