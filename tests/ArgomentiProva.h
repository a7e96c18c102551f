#pragma once
// The options of a test program of its own, taken out before GoogleTest reads
// the rest: --pg=<libpq connection string> runs the tests on that server.
#include <QByteArray>
#include <cstring>

namespace prestkt::test {

inline void LeggiArgomentiProva(int& argc, char** argv) {
  int j = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--pg=", 5) == 0) qputenv("PRESTKT_PG", QByteArray(argv[i] + 5));
    else argv[j++] = argv[i];
  }
  argc = j;
  argv[argc] = nullptr;
}

}  // namespace prestkt::test
