#include "Application.h"

int main(int argc, char** argv) { return selu::RunApplication(argc, argv); }
