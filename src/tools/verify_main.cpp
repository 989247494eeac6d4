#include "tools/verify_command.h"

int main(int argc, char** argv) { return vorel::tools::run_verify_command(argc, argv); }
