// kelmar: the terminal application of the kit.
#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--version") == 0) {
    std::printf("kelmar %s\n", KELMAR_VERSION);
    return 0;
  }
  std::printf("usage: kelmar [--version] [--help]\n");
  return argc > 1 && std::strcmp(argv[1], "--help") != 0 ? 2 : 0;
}
