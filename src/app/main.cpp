#include "app/TovMain.h"

int main(int argc, char** argv) { return tov::runTov(argc, argv); }
