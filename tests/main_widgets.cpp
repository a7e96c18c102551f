// Test main of the screen tests: a widget application on the offscreen platform.
#include <QApplication>
#include <gtest/gtest.h>

#include "ArgomentiProva.h"

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  prestkt::test::LeggiArgomentiProva(argc, argv);
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
