#include "tools/flow_command.h"

int main(int argc, char** argv) { return vorel::tools::run_flow_command(argc, argv); }
