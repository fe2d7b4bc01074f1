#include "Design/PaintedWidget.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <QApplication>

int main(int argc, char** argv) {
    // No screen is needed, and none is to be found by accident.
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QApplication application(argc, argv);
    vantoro::installAccessibility();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
