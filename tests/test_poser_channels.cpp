// Channels sections and channel bodies, read through real files: which host property each channel
// kind drives, values in host units, limits and clamping, labels, rotation order, bad input.
#include "PoserTest.h"

#include <OvDeformers.h>
#include <OvLight.h>
#include <OvModifiers.h>
#include <QRegularExpression>
#include <cmath>
#include <functional>

namespace {

using Channels = PoserTest;

// A scene with a prop "box" (one triangle) whose channels section holds `channels`.
QByteArray propWith(const QByteArray &channels) {
    return "prop box\n{\ngeomCustom\n{\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n}\nchannels\n{\n" + channels +
           "}\n}\n";
}

OvFloatProperty *floatOf(OvProperty *p) {
    return dynamic_cast<OvFloatProperty *>(p);
}

struct KindRow {
    const char *what;
    QByteArray file; // each file's body sets initValue 2 on the channel it tests
    std::function<OvProperty *()> property;
    float expected; // default value the property ends with
};

TEST_F(Channels, EachKindDrivesItsHostProperty) {
    auto box = [] { return labelled("box"); };
    // The light or camera of a file that holds nothing else.
    auto light = [] { return scene()->getNode(0); };
    auto body = [](const char *line) { return QByteArray(line) + "\n{\ninitValue 2\n}\n"; };
    auto lightWith = [&](int type, const char *line) {
        return "light L\n{\nlightType " + QByteArray::number(type) + "\nchannels\n{\n" + body(line) +
               "}\n}\n";
    };
    auto cameraWith = [&](const char *line) { return "camera C\n{\nchannels\n{\n" + body(line) + "}\n}\n"; };
    const KindRow rows[] = {
        {"rotation", propWith(body("rotateY yrot")), [&] { return box()->getYRotControl(); }, 2},
        {"translation in host units", propWith(body("translateZ ztran")),
         [&] { return box()->getZPosControl(); }, 2 * 243.84f},
        {"uniform scale", propWith(body("scale scale")), [&] { return box()->getScaleControl(); }, 2},
        {"propagating scale", propWith(body("propagatingScaleY yScale")),
         [&] { return box()->getYScaleControl(); }, 2},
        {"axis scale", propWith(body("scaleX xScale")), [&] { return box()->getXScaleControl(); }, 2},
        {"value dial", propWith(body("valueParm Smile Wide")),
         [&] { return box()->findProperty("Smile Wide"); }, 2},
        {"point-at", propWith(body("pointAtParm PointAt")), [&] { return box()->findPointAtControl(); }, 2},
        {"unknown kind: body skipped", propWith(body("fancyNewKind x") + body("rotateX xrot")),
         [&] { return box()->getXRotControl(); }, 2},
        {"intensity", lightWith(1, "kdIntensity KdI"),
         [&] { return qobject_cast<OvLight *>(light())->getIntensityControl(); }, 2},
        {"spot spread", lightWith(1, "liteFalloffEnd falloff"),
         [&] { return qobject_cast<OvSpotLight *>(light())->getSpreadAngleControl(); }, 2},
        {"spot light moves", lightWith(1, "translateY ytran"), [&] { return light()->getYPosControl(); },
         2 * 243.84f},
        {"distant light does not move", lightWith(0, "translateY ytran"),
         [&] { return light()->getYPosControl(); }, 0},
        {"focal length", cameraWith("focal focal"),
         [&] { return qobject_cast<OvBasicCamera *>(light())->getFocalLengthChannel(); }, 2},
        {"camera dolly", cameraWith("translateZ dollyZ"), [&] { return light()->getZPosControl(); },
         2 * 243.84f},
        {"camera takes only dolly channels", cameraWith("translateX xtran"),
         [&] { return light()->getXPosControl(); }, 0},
    };
    for (const KindRow &row : rows) {
        SCOPED_TRACE(row.what);
        OvApp::reset();
        ASSERT_TRUE(readOk("k.pz3", row.file)) << logText().toStdString();
        OvFloatProperty *p = floatOf(row.property());
        ASSERT_TRUE(p);
        EXPECT_FLOAT_EQ(p->getDefaultValue(), row.expected);
    }
}

TEST_F(Channels, LimitsSensitivityAndClampingInHostUnits) {
    ASSERT_TRUE(
        readOk("l.pz3", propWith("translateY ytran\n{\ninitValue 1\nforceLimits 1\nmax 50\n"
                                 "trackingScale 0.004\n}\n"
                                 "rotateY yrot\n{\nforceLimits 1\nmin -9999\nmax 50\ntrackingScale 0\n"
                                 "trackingScale -1\nforceLimits 0\n}\n"
                                 "rotateX xrot\n{\nforceLimits 1\nmin -10000\nmax 10000\n}\n"
                                 "rotateZ zrot\n{\ninitValue 100\nmin -80\nmax 80\nforceLimits 1\n}\n"
                                 "valueParm Swapped\n{\nmin 10\nmax -10\n}\n")));
    OvNode *box = labelled("box");
    OvFloatProperty *ty = box->getYPosControl(), *ry = box->getYRotControl(), *rx = box->getXRotControl(),
                    *rz = box->getZRotControl();
    EXPECT_FLOAT_EQ(ty->getDefaultValue(), 243.84f);
    EXPECT_FLOAT_EQ(ty->getMax(), 12192.0f);
    EXPECT_FALSE(ty->isClamped()) << "a translation limit of 50 Poser units means no limit";
    EXPECT_FLOAT_EQ(ty->getSensitivity(), 0.97536f);
    EXPECT_TRUE(ry->isClamped()) << "-9999 is still a limit, forceLimits 0 changes nothing";
    EXPECT_TRUE(ry->getMin() == -9999.0f && ry->getMax() == 50.0f && ry->getSensitivity() == 1.0f);
    EXPECT_FALSE(rx->isClamped());
    EXPECT_EQ(rx->getMax(), 10000.0f);
    // A clamped dial stays in its range.
    EXPECT_TRUE(rz->getValue() == 80.0f && rz->getDefaultValue() == 100.0f) << "limits given after the value";
    rz->setValue(120);
    EXPECT_EQ(rz->getValue(), 80.0f);
    rx->setValue(20000);
    EXPECT_EQ(rx->getValue(), 20000.0f);
    // Limits the wrong way round are put right, and said so.
    auto *swapped = floatOf(box->findProperty("Swapped"));
    EXPECT_TRUE(swapped->getMin() == -10.0f && swapped->getMax() == 10.0f);
    EXPECT_EQ(
        logText().section(" on line ", 0, 0),
        "info: The minimum of channel \"Swapped\" (10) lies above its maximum (-10); the two are swapped");
}

TEST_F(Channels, LabelsAndVisibility) {
    ASSERT_TRUE(readOk("n.pz3", "light L\n{\nlightType 1\nchannels\n{\nkdGreen KdG\n{\nname Green\n}\n"
                                "kdIntensity KdI\n{\nname Brightness\n}\n}\n}\n" +
                                    propWith("rotateX xrot\n{\nname Bend Forward\nhidden 1\n}\n"
                                             "geomChan Geom\n{\nhidden 1\nname Shape\n}\n")));
    auto *light = qobject_cast<OvLight *>(scene()->getNode(0));
    EXPECT_EQ(light->getColorControl()->getLabel(), "Color") << "colour channels share one property";
    EXPECT_EQ(light->getIntensityControl()->getLabel(), "Brightness");
    OvNode *box = labelled("box");
    EXPECT_TRUE(box->getXRotControl()->isHidden());
    EXPECT_EQ(box->getXRotControl()->getLabel(), "Bend Forward");
    EXPECT_FALSE(box->getObject()->getGeometryControl()->isHidden()) << "the geometry switch stays visible";
    EXPECT_EQ(box->getObject()->getGeometryControl()->getLabel(), "Shape");
}

TEST_F(Channels, RotationOrderFollowsTheChannels) {
    ASSERT_TRUE(readOk("r.pz3",
                       "prop a\n{\nchannels\n{\nrotateY y\n{\n}\nrotateZ z\n{\n}\nrotateX x\n{\n}\n}\n"
                       "channels\n{\nrotateX x\n{\n}\n}\n}\n"
                       "prop b\n{\nchannels\n{\nrotateZ z\n{\n}\n}\n}\n"
                       "prop d\n{\nchannels\n{\nrotateY y\n{\n}\n}\n}\n"
                       "prop c\n{\nchannels\n{\nrotateX x\n{\n}\nrotateZ z\n{\n}\nrotateY y\n{\n}\n"
                       "rotateY y\n{\n}\n}\n}\n"));
    EXPECT_EQ(labelled("a")->getRotationOrder(), OvRotationOrder::YZX)
        << "a second channels section does not change the order";
    EXPECT_EQ(labelled("b")->getRotationOrder(), OvRotationOrder::ZXY);
    EXPECT_EQ(labelled("d")->getRotationOrder(), OvRotationOrder::YXZ);
    EXPECT_EQ(labelled("c")->getRotationOrder(), OvRotationOrder::XZY);
    EXPECT_EQ(logText().section(" in ", 0, 0),
              "error: Too many rotational degrees of freedom specified on line 53");
    const short same[3] = {1, 1, 0};
    EXPECT_EQ(OvPZ3Importer::rotationOrderFor(2, same), OvRotationOrder::XYZ);
}

// Value dials are found again by name on their own node only; a pose makes none.
TEST_F(Channels, ValueDialsAreMadeOncePerNode) {
    ASSERT_TRUE(
        readOk("v.pz3", propWith("valueParm Smile\n{\ninitValue 0.5\n}\nvalueParm Smile\n{\nmax 1\n}\n") +
                            "prop other\n{\nchannels\n{\nvalueParm Smile\n{\n}\n}\n}\n"));
    OvNode *box = labelled("box");
    ASSERT_EQ(box->getNumProperties(), 14);
    auto *smile = floatOf(box->findProperty("Smile"));
    EXPECT_TRUE(smile->isUserProperty() && smile->canAnimate());
    EXPECT_TRUE(smile->getDefaultValue() == 0.5f && smile->getMax() == 1.0f);
    EXPECT_EQ(importer.findChannelProperty(box, "Smile"), smile);
    EXPECT_NE(importer.findChannelProperty(labelled("other"), "Smile"), smile);
    EXPECT_EQ(importer.findChannelProperty(box, "xrot"), nullptr);

    scene()->setPrimarySelection(box);
    ASSERT_TRUE(readOk("p.pz2", "prop box\n{\nchannels\n{\nvalueParm Frown\n{\ninitValue 1\n}\n"
                                "valueParm Smile\n{\ninitValue 0.25\n}\n}\n}\n"));
    EXPECT_EQ(box->getNumProperties(), 14);
    EXPECT_EQ(smile->getDefaultValue(), 0.25f) << "a pose finds the dial by its property name";
}

TEST_F(Channels, PointAtAndDeformerTargets) {
    ASSERT_TRUE(readOk("t.pz3", "prop ball\n{\n}\nmagnetDeformerProp Magnet 1\n{\n}\n" +
                                    propWith("pointAtParm PointAt\n{\npointAtTarget ball\n}\n"
                                             "deformerPropChan Magnet 1:1\n{\ndeformerProp Magnet 1\n"
                                             "initValue 0.5\nmin -2\n}\n"
                                             "deformerPropChan Other\n{\ndeformerProp UNIVERSE\n}\n")));
    OvNode *box = labelled("box");
    EXPECT_EQ(box->findPointAtControl()->getNode(), labelled("ball"));
    const OvObject *object = box->getObject();
    ASSERT_EQ(object->getNumModifiers(), 2);
    auto *magnet = dynamic_cast<OvDFormModifier *>(object->getModifier(0));
    ASSERT_TRUE(magnet);
    EXPECT_EQ(magnet->getName(), "Magnet 1");
    EXPECT_EQ(magnet->getDForm(), labelled("Magnet 1"));
    EXPECT_EQ(magnet->getValueChannel()->getDefaultValue(), 1.0f) << "initValue is no deformer keyword";
    EXPECT_EQ(magnet->getValueChannel()->getMin(), -2.0f);
    EXPECT_EQ(dynamic_cast<OvDFormModifier *>(object->getModifier(1))->getDForm(), nullptr);
}

// Each bad line gets its message and the reading goes on, or stops, as the row says.
TEST_F(Channels, BadInput) {
    struct Row {
        QByteArray channels;
        bool ok;
        const char *log;
    } rows[] = {
        {"valueParm\n{\n}\n", false, "error: No name was given for the valueParm channel"},
        {"deformerPropChan\n{\n}\n", false, "error: No deformer name was specified"},
        {"rotateX x\n{\nmin\n}\n", false, "error: No value specified"},
        {"rotateX x\n{\nname\n}\n", true, "info: No name specified"},
        {"rotateX x\n{\nmax lots\nmin 1\n}\n", true,
         "info: \"lots\" is not a number; the max line is ignored"},
        {"pointAtParm p\n{\n}\nrotateX x\n{\npointAtTarget ball\n}\n", false,
         "error: Wrong channel type for pointAtTarget"},
        {"geomChan g\n{\npointAtTarget ball\n}\n", false, "error: Wrong channel type for pointAtTarget"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.channels.toStdString());
        OvApp::reset();
        EXPECT_EQ(readOk("bad.pz3", propWith(row.channels)), row.ok);
        // Each message names the line (the first channel line is line 12) and the file.
        EXPECT_EQ(logText().section(" on line ", 0, 0), row.log);
        EXPECT_TRUE(logText().contains(QRegularExpression(" on line 1[2-7] in .*bad.pz3$")));
    }
    OvFloatProperty *rx = labelled("box")->getXRotControl();
    EXPECT_TRUE(std::isinf(rx->getMin())) << "the channel kept its limits";

    // A channel line outside any node touches nothing, a geometry switch without an object takes no
    // attributes; the lines of a deep body stay inside it.
    OvApp::reset();
    ASSERT_TRUE(readOk("u.pz3", "actor UNIVERSE\n{\nchannels\n{\nrotateX x\n{\ninitValue 5\n}\n"
                                "translateX t\n{\n{\n{\n}\n}\nkeys\n{\nk 0 1\n}\n}\n}\n}\n"
                                "prop bare\n{\nchannels\n{\ngeomChan g\n{\nmin 0\nhidden 1\n}\n}\n}\n" +
                                    propWith("rotateX x\n{\ninitValue 3\n}\n")));
    EXPECT_EQ(labelled("box")->getXRotControl()->getDefaultValue(), 3.0f);
    EXPECT_EQ(logText(), "");
}

// Ten thousand dials on one actor, some twice: found by name, not by a scan.
TEST_F(Channels, ManyChannelsOnOneActor) {
    QByteArray channels;
    for (int i = 0; i < 10000; ++i)
        channels += "valueParm dial" + QByteArray::number(i % 9000) + "\n{\ninitValue " +
                    QByteArray::number(i) + "\n}\n";
    ASSERT_TRUE(readOk("m.pz3", propWith(channels)));
    OvNode *box = labelled("box");
    EXPECT_EQ(box->getNumProperties(), 13 + 9000);
    EXPECT_EQ(floatOf(importer.findChannelProperty(box, "dial5"))->getDefaultValue(), 9005.0f);
    EXPECT_EQ(floatOf(importer.findChannelProperty(box, "dial8999"))->getDefaultValue(), 8999.0f);
}

} // namespace
