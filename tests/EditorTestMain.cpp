// The editor's tests need a QApplication and a display; listing them needs neither, so that
// the build can discover them on a machine without one.
#include <QApplication>
#include <QSurfaceFormat>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();

    // The fixed-function pipeline needs a compatibility profile.
    QSurfaceFormat format;
    format.setProfile(QSurfaceFormat::CompatibilityProfile);
    format.setVersion(2, 1);
    QSurfaceFormat::setDefaultFormat(format);

    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
