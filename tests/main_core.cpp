// Test main of the programs that link only the core: a GUI application on the
// offscreen platform, so that pages can be painted without a display.
#include <QGuiApplication>
#include <QLocale>
#include <gtest/gtest.h>

#include "ArgomentiProva.h"

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  prestkt::test::LeggiArgomentiProva(argc, argv);
  QGuiApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
