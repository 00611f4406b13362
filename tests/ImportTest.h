#pragma once
// Base of the suites that import into the host scene: a fresh host and a temporary folder for every
// test, and the scene invariants checked after every test, whatever it imported.

#include "support/TestSupport.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

class ImportTest : public ::testing::Test {
protected:
    void SetUp() override;
    // Fails the test when the scene it leaves breaks an invariant.
    void TearDown() override;

    // Writes `text` to a file of the temporary folder (folders are made) and returns its path.
    QString file(const QString &name, const QByteArray &text) { return writeFile(dir, name, text); }

    QTemporaryDir dir;
};
