#include "ImportTest.h"
#include "support/SceneInvariants.h"

#include <OvApp.h>

void ImportTest::SetUp() {
    OvApp::reset();
    ASSERT_TRUE(dir.isValid());
}

void ImportTest::TearDown() {
    const QStringList problems = checkSceneInvariants(*OvApp::getScene());
    EXPECT_TRUE(problems.isEmpty()) << problems.join(QLatin1Char('\n')).toStdString();
}
