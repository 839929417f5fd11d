#include "app/CommandLine.h"

int main(int argc, char* argv[]) { return Dicapsule::Main(argc, argv); }
