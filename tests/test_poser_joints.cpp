// Joint parameters of figure bones: the channel lines that open them, the keywords of their bodies
// and the raw sphere matrices, read through whole figure files and checked in the scene tree.
#include "PoserTest.h"

#include <OvModifiers.h>
#include <SceneDump.h>

namespace {

QString g_messages; // Qt debug and warning output of the current case

void collectMessage(QtMsgType type, const QMessageLogContext &, const QString &message) {
    if (type == QtDebugMsg || type == QtWarningMsg)
        g_messages += message + '\n';
}

constexpr unsigned Stopped = 0x62;

struct Case {
    const char *channels; // the channels section of rShldr; its first line is line 17
    unsigned result;
    int params;       // how many parameters rShldr's joint holds
    const char *want; // in the tree's lines of those parameters
    const char *said; // in the log or the Qt output; nothing at all is said when null
};

class PoserJoints : public PoserTest {
protected:
    void SetUp() override {
        PoserTest::SetUp();
        qInstallMessageHandler(collectMessage);
    }
    void TearDown() override {
        qInstallMessageHandler(nullptr);
        PoserTest::TearDown();
    }

    // A figure whose rShldr has `channels` as its channels section, followed by an object line.
    void check(const Case &c) {
        SCOPED_TRACE(c.channels);
        OvApp::reset();
        g_messages.clear();
        ASSERT_EQ(read("fig.cr2",
                       QByteArray("* no geometry\nactor hip:1\n{\n}\nactor rShldr:1\n{\nparent hip:1\n}\n"
                                  "actor rForeArm:1\n{\nparent rShldr:1\n}\nactor rShldr:1\n{\n"
                                  "channels\n{\n") +
                           c.channels + "}\nhidden 1\n}\n"),
                  c.result);
        OvBone *shoulder = skeleton("fig")->findBone("rShldr");
        auto *joint = shoulder->getObject()->findModifier<OvPoserJoint>();
        EXPECT_EQ(joint->getNumParams(), c.params);
        if (c.result == 0) {
            EXPECT_TRUE(shoulder->isHidden()) << "the sections after the parameters close where they should";
        }
        QString tree, lines;
        QTextStream out(&tree);
        writeSceneTree(out, *scene());
        for (const QString &line : tree.split('\n'))
            if (line.contains("param ") || line.contains("sphere matrix"))
                lines += line.trimmed() + '\n';
        EXPECT_TRUE(lines.contains(c.want ? c.want : "")) << lines.toStdString();
        EXPECT_EQ(lines.contains("sphere matrix"), QString(c.want).contains("sphere matrix"));
        const QString said = logText() + g_messages;
        EXPECT_TRUE(c.said ? said.contains(c.said) : said.isEmpty()) << said.toStdString();
    }
};

TEST_F(PoserJoints, BodyKeywords) {
    const Case cases[] = {
        {"jointX p\n{\nangles 0 90 180 270\n}\n", 0, 1,
         "param OvPoserBendParam \"p\": axis 0, driver \"rShldr\", angles (0, 1.57079613, 3.14159226, "
         "4.71238852) "
         "on, bulges (0, 0, 0, 0) off\n",
         nullptr},
        {"jointX p\n{\nposBulgeLeft 0.5\nposBulgeRight 1\nnegBulgeLeft -1\nnegBulgeRight 2\ndoBulge 2\n}\n",
         0, 1, "bulges (121.919998, 243.839996, -243.839996, 487.679993) on\n", nullptr},
        {"jointX p\n{\ndoBulge 2\ndoBulge 0\ncenter 0.1 0.2 0.3\nsomethingNew 1\n}\n", 0, 1,
         "\"p\": axis 0, driver \"rShldr\", angles (0, 0, 0, 0) off, bulges (0, 0, 0, 0) off\n", nullptr},
        {"twistY p\n{\nstartPt 0.25\nflipped 0 extra\n}\n", 0, 1,
         "param OvPoserTwistParam \"p\": axis 1, driver \"rShldr\", flipped, start 60.9599991, end 0, blend "
         "off\n",
         nullptr},
        {"twistY p\n{\nendPt -0.5\n}\n", 0, 1, "start 0, end -121.919998, blend on\n", nullptr},
        {"smoothScaleZ p\n{\nsmoothZones 0 0.5 1 -1\n}\n", 0, 1,
         "param OvPoserSmoothScale \"p\": axis 2, driver \"rShldr\", zones (0, 121.919998, 243.839996, "
         "-243.839996)",
         nullptr},
        // Keywords of another kind of parameter: a warning, and the reading goes on.
        {"jointX p\n{\nstartPt 1\n}\n", 0, 1, "",
         "Wrong type of joint parameter for tag 'startPt' on line 19!"},
        {"jointX p\n{\nendPt 1\n}\n", 0, 1, "", "Wrong type of joint parameter for tag 'endPt' on line 19!"},
        {"jointY p\n{\nsmoothZones 1 2 3 4\n}\n", 0, 1, "", "for tag 'smoothZones' on line 19!"},
        {"twistY p\n{\nangles 1 2 3 4\n}\n", 0, 1, "end 0, blend off", "for tag 'angles' on line 19!"},
        {"twistY p\n{\nnegBulgeRight 1\n}\n", 0, 1, "", "for tag 'negBulgeRight' on line 19!"},
        {"smoothScaleX p\n{\ndoBulge 1\n}\n", 0, 1, "", "for tag 'doBulge' on line 19!"},
        // Too few values stop the import.
        {"jointX p\n{\ncenter 0.1\n}\n", Stopped, 1, "",
         "error: Not enough parameters specified for 'center' on line 19"},
        {"jointX p\n{\nangles 1 2 3\n}\n", Stopped, 1, "",
         "error: Not enough joint parameter angles specified on line 19"},
        {"jointX p\n{\ndoBulge\n}\n", Stopped, 1, "", "error: No Bulge setting specified on line 19"},
        {"jointX p\n{\nposBulgeLeft\n}\n", Stopped, 1, "",
         "error: No posBulgeLeft value specified on line 19"},
        {"jointX p\n{\nnegBulgeRight\n}\n", Stopped, 1, "",
         "error: No negBulgeRight value specified on line 19"},
        {"twistX p\n{\nstartPt\n}\n", Stopped, 1, "", "error: Not enough parameters specified on line 19"},
        {"jointX p\n{\nsmoothZones 1 2 3\n}\n", Stopped, 1, "",
         "error: Not enough parameters specified on line 19"},
        {"twistY p\n{\notherActor\n}\n", Stopped, 1, "",
         "error: No actor specified for otherActor on line 19"},
    };
    for (const Case &c : cases)
        check(c);
}

TEST_F(PoserJoints, ChannelLinesAndSphereMatrices) {
    const Case cases[] = {
        // A name with '_' names a bone pair: the first otherActor drives it, a second does not.
        {"twistY rShldr_rForeArm\n{\notherActor rForeArm:1\notherActor hip:1\n}\n", 0, 1,
         "\"rShldr_rForeArm\": axis 1, driver \"rForeArm\",", nullptr},
        {"smoothScaleX a_b\n{\notherActor nobody:1\n}\n", 0, 1, "\"a_b\": axis 0, driver none,",
         "info: No bone found for otherActor on line 19"},
        // The same name finds the parameter made first, whatever the kind; the axis follows.
        {"jointX p\n{\n}\ntwistZ p\n{\nstartPt 1\n}\n", 0, 1, "OvPoserBendParam \"p\": axis 2,",
         "for tag 'startPt' on line 22!"},
        {"jointY\n{\n}\n", Stopped, 0, "", "error: No joint parameter name was specified on line 17"},
        {"curve\n{\n}\n", Stopped, 0, "", "error: No curve parameter name was specified on line 17"},
        // A curve follows the first twist; without one its whole section is skipped.
        {"twistX t\n{\n}\ntwistZ u\n{\n}\ncurve c\n{\nflipped\n}\n", 0, 3,
         "param OvPoserCurve \"c\": axis 5, driver none, flipped, bone \"rShldr\"", nullptr},
        {"twistY t\n{\n}\ncurve c\n{\n}\n", 0, 2, "OvPoserCurve \"c\": axis 4,", nullptr},
        {"twistZ t\n{\n}\ncurve c\n{\n}\n", 0, 2, "OvPoserCurve \"c\": axis 3,", nullptr},
        {"curve c\n{\nflipped\nsphereMatsRaw\n{\n}\n}\n", 0, 0, "",
         "No twist parameter found for bone when adding curve!"},
        // Sphere matrices in the usual layout: a block of two blocks of four rows, host units but for
        // the homogeneous column.
        {"jointX p\n{\nsphereMatsRaw\n{\n{\n1 0 0 0\n0 2 0 0\n0 0 3 0\n0.5 0.25 0 1\n}\n{\n4 0 0 0\n0 5 0 0\n"
         "0 0 6 0 extra\n1 1 1 1\n}\n}\nflipped\n}\ntwistY t\n{\n}\n",
         0, 2,
         "flipped, angles (0, 0, 0, 0) off, bulges (0, 0, 0, 0) off\n"
         "sphere matrix (243.839996, 0, 0, 0, 0, 487.679993, 0, 0, 0, 0, 731.52002, 0, 121.919998, "
         "60.9599991, 0, 1)\n"
         "sphere matrix (975.359985, 0, 0, 0, 0, 1219.19995, 0, 0, 0, 0, 1463.04004, 0, 243.839996, "
         "243.839996, "
         "243.839996, 1)\nparam OvPoserTwistParam",
         nullptr},
        // Cut short by a '}' the block did not open: it closes the joint section.
        {"jointX p\n{\nsphereMatsRaw\n1 0 0 0\n0 1 0 0\n}\ntwistY t\n{\n}\n", 0, 2, "OvPoserTwistParam \"t\"",
         "info: sphereMatsRaw ends after 2 of its 8 rows; its sphere matrices are not used on line 22"},
        // A block that closes early is as short; the lines after it belong to the joint section.
        {"jointX p\n{\nsphereMatsRaw\n{\n{\n1 0 0 0\n}\n}\nflipped\n}\n", 0, 1,
         "\"p\": axis 0, driver \"rShldr\", flipped",
         "info: sphereMatsRaw ends after 1 of its 8 rows; its sphere matrices are not used on line 24"},
    };
    for (const Case &c : cases)
        check(c);
}

TEST_F(PoserJoints, NoBoneOrNoMoreInput) {
    // A prop is no bone: no parameter, and the body is read as a nested channels section.
    ASSERT_TRUE(readOk("box.pp2", "prop box\n{\nchannels\n{\ntwistX t\n{\nflipped\n}\n}\nhidden 1\n}\n"));
    EXPECT_TRUE(g_messages.contains("Wrong type of node for joint parameter on line 5!"))
        << g_messages.toStdString();
    EXPECT_TRUE(labelled("box")->isHidden());

    OvApp::reset();
    ASSERT_EQ(read("cut.cr2",
                   "actor hip:1\n{\n}\nactor hip:1\n{\nchannels\n{\njointX p\n{\nsphereMatsRaw\n{\n{\n"
                   "1 0 0 0\n0 1 0 0\n0 0 1 0\n"),
              0u);
    EXPECT_TRUE(logText().contains("ends after 3 of its 8 rows; its sphere matrices are not used on line 15"))
        << logText().toStdString();
    EXPECT_TRUE(logText().contains("3 sections still open at the end of file"))
        << "the block's braces are its own";
}

} // namespace
