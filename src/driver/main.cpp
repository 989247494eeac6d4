#include "driver/application.h"

int main(int argc, char** argv) { return vorel::driver::run_application(argc, argv); }
