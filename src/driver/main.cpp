#include "driver/application.h"

int main(int argc, char** argv) { return vorel::run_application(argc, argv); }
