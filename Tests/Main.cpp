#include <gtest/gtest.h>

#include <QGuiApplication>

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}
