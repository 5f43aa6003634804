#include "media/PlugIns.h"
#include "view/PictureView.h"
#include "view/Style.h"

#include <QApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

int main(int count, char** words) {
    testing::InitGoogleTest(&count, words);
    QStandardPaths::setTestModeEnabled(true);
    view::AskForOpenGL();
    QApplication program(count, words);
    QApplication::setApplicationName("k7view-test");
    view::UseTheme(true);
    media::LoadPlugIns();
    return RUN_ALL_TESTS();
}
