// The editor's tests need a QApplication and a display; listing them needs neither, so that
// the build can discover them on a machine without one.
#include <QApplication>
#include <QSurfaceFormat>

#include "widget/GraphWidget.h"

#include <gtest/gtest.h>

using Ovantis::SplinorEditorQtLib::v22::GraphWidget;

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();

    QSurfaceFormat::setDefaultFormat(GraphWidget::surfaceFormat());

    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
