// The OBJ options frame as a user drives it: presets picked in the combo box, settings loaded into
// the controls and saved back.
#include <OvApp.h>
#include <QCheckBox>
#include <QDoubleValidator>
#include <QGroupBox>
#include <QLineEdit>
#include <gtest/gtest.h>
#include <memory>
#include <obj/OvObjImportFrame.h>
#include <obj/OvObjImporter.h>

namespace {

const char *const kBoolKeys[] = {"SwapYZ", "IncludeG", "IncludeVT", "IncludeUsemtl", "IncludeMtllib"};

class ObjOptionsFrame : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        frame = std::make_unique<OvObjImportFrame>();
    }

    // What a click on a combo box item does: the item becomes current, then activated is emitted.
    void choose(int index) {
        frame->presetBox()->setCurrentIndex(index);
        Q_EMIT frame->presetBox()->activated(index);
    }

    void setIncludes(bool on) {
        frame->groupsBox()->setChecked(on);
        frame->uvBox()->setChecked(on);
        frame->surfacesBox()->setChecked(on);
        frame->materialLibraryBox()->setChecked(on);
    }

    OvFileIOSettings saved() {
        OvFileIOSettings s;
        frame->saveOptions(s);
        return s;
    }

    std::unique_ptr<OvObjImportFrame> frame;
};

struct PresetRow {
    const char *text;
    const char *scaleText; // "" where the field is emptied for the user to fill
    float scale;           // saved "Scale" right after choosing the preset
    bool editable;
    bool swap;
};

const PresetRow kPresets[] = {
    {"Custom (1 unit = 1cm)", "", 0.0f, true, false},
    {"Blender (1 unit = ?)", "5000", 50.0f, true, true},
    {"Talven (1 unit = 8ft)", "24384", 243.84f, false, false},
    {"Cinema 4D (1 unit = 1m)", "10000", 100.0f, false, false},
    {"Morvic (1 unit = 1in)", "254", 2.54f, false, false},
    {"Plentor (1 unit = 1cm)", "100", 1.0f, false, false},
    {"Lightwave (1 unit = 1m)", "10000", 100.0f, false, false},
    {"MAX (1 unit = 1m)", "10000", 100.0f, false, true},
    {"Maya (1 unit = 1cm)", "100", 1.0f, false, false},
    {"Mirai (1 unit = 1m)", "10000", 100.0f, false, false},
    {"Modo (1 unit = 1m)", "10000", 100.0f, false, false},
    {"Poser (1 unit = 8ft)", "24384", 243.84f, false, false},
    {"Silo (1 unit = 10cm)", "1000", 10.0f, false, false},
    {"XSI (1 unit = ?)", "", 0.0f, true, false},
};

TEST_F(ObjOptionsFrame, PresetBoxListsTheFourteenPresetsInOrder) {
    ASSERT_EQ(frame->presetBox()->count(), 14);
    for (int i = 0; i < 14; ++i)
        EXPECT_EQ(frame->presetBox()->itemText(i), QString::fromLatin1(kPresets[i].text)) << i;
}

// Every preset starts from the opposite of what it should produce, so a preset that forgets to set
// something shows up.
TEST_F(ObjOptionsFrame, ChoosingEachPresetSetsScaleSwapAndIncludes) {
    for (int i = 0; i < 14; ++i) {
        const PresetRow &row = kPresets[i];
        SCOPED_TRACE(row.text);
        frame->scaleEdit()->setText(QStringLiteral("777"));
        frame->scaleEdit()->setEnabled(!row.editable);
        frame->swapBox()->setChecked(!row.swap);
        setIncludes(false);

        choose(i);

        EXPECT_EQ(frame->scaleEdit()->text(), QString::fromLatin1(row.scaleText));
        EXPECT_EQ(frame->scaleEdit()->isEnabled(), row.editable);
        EXPECT_EQ(frame->swapBox()->isChecked(), row.swap);
        // Real presets switch every include back on; Custom and XSI leave them alone.
        const bool includes = row.scaleText[0] != '\0';
        EXPECT_EQ(frame->groupsBox()->isChecked(), includes);
        EXPECT_EQ(frame->uvBox()->isChecked(), includes);
        EXPECT_EQ(frame->surfacesBox()->isChecked(), includes);
        EXPECT_EQ(frame->materialLibraryBox()->isChecked(), includes);

        OvFileIOSettings s = saved();
        EXPECT_EQ(s.getStringValue("Preset"), QString::fromLatin1(row.text));
        EXPECT_FLOAT_EQ(s.getFloatValue("Scale", -1.0f), row.scale);
        EXPECT_EQ(s.getBoolValue("SwapYZ", !row.swap), row.swap);
    }
}

TEST_F(ObjOptionsFrame, CustomScaleIsWhatTheUserTypesAsPercent) {
    choose(13);
    frame->scaleEdit()->setText(QStringLiteral("150"));
    EXPECT_FLOAT_EQ(saved().getFloatValue("Scale", -1.0f), 1.5f);
    // Out-of-range indices behave like Custom.
    frame->scaleEdit()->setEnabled(false);
    frame->swapBox()->setChecked(true);
    frame->updateOptions(99);
    EXPECT_TRUE(frame->scaleEdit()->text().isEmpty());
    EXPECT_TRUE(frame->scaleEdit()->isEnabled());
    EXPECT_FALSE(frame->swapBox()->isChecked());
}

TEST_F(ObjOptionsFrame, ScaleFieldAcceptsOnlyNonNegativeNumbers) {
    auto *validator = qobject_cast<const QDoubleValidator *>(frame->scaleEdit()->validator());
    ASSERT_NE(validator, nullptr);
    EXPECT_EQ(validator->decimals(), 20);
    EXPECT_EQ(validator->bottom(), 0.0);
    QString negative = QStringLiteral("-5"), fraction = QStringLiteral("12.125");
    int pos = 0;
    EXPECT_EQ(validator->validate(negative, pos), QValidator::Invalid);
    EXPECT_EQ(validator->validate(fraction, pos), QValidator::Acceptable);
}

TEST_F(ObjOptionsFrame, LoadThenSaveKeepsEveryKey) {
    OvFileIOSettings in;
    in.setStringValue("Preset", "Maya (1 unit = 1cm)");
    in.setFloatValue("Scale", 2.54f);
    for (const char *key : kBoolKeys)
        in.setBoolValue(key, false);
    frame->loadOptions(in);
    EXPECT_EQ(frame->presetBox()->currentIndex(), 8);
    EXPECT_EQ(frame->scaleEdit()->text(), QStringLiteral("254"));

    OvFileIOSettings out = saved();
    EXPECT_EQ(out.keys().size(), 7);
    EXPECT_EQ(out.getStringValue("Preset"), QStringLiteral("Maya (1 unit = 1cm)"));
    EXPECT_FLOAT_EQ(out.getFloatValue("Scale"), 2.54f);

    // One key flipped at a time, so two controls wired to each other's key cannot pass.
    for (const char *flipped : kBoolKeys) {
        SCOPED_TRACE(flipped);
        OvFileIOSettings one = in;
        one.setBoolValue(flipped, true);
        frame->loadOptions(one);
        OvFileIOSettings back = saved();
        for (const char *key : kBoolKeys)
            EXPECT_EQ(back.getBoolValue(key, true), key == flipped) << key;
    }
}

TEST_F(ObjOptionsFrame, LoadShowsScaleAsPercentAndDefaults) {
    OvFileIOSettings s;
    s.setFloatValue("Scale", 243.84f);
    frame->loadOptions(s);
    EXPECT_EQ(frame->scaleEdit()->text(), QStringLiteral("24384"));

    frame->swapBox()->setChecked(true);
    setIncludes(false);
    frame->presetBox()->setCurrentIndex(0);
    frame->loadOptions(OvFileIOSettings());
    EXPECT_EQ(frame->scaleEdit()->text(), QStringLiteral("100"));
    EXPECT_EQ(frame->presetBox()->currentIndex(), 2);
    EXPECT_FALSE(frame->swapBox()->isChecked());
    EXPECT_TRUE(frame->groupsBox()->isChecked());
    EXPECT_TRUE(frame->uvBox()->isChecked());
    EXPECT_TRUE(frame->surfacesBox()->isChecked());
    EXPECT_TRUE(frame->materialLibraryBox()->isChecked());
}

// Loading selects the item quietly: the preset's own scale, swap and field state are not applied.
TEST_F(ObjOptionsFrame, LoadDoesNotApplyThePreset) {
    choose(2); // field read-only
    OvFileIOSettings s;
    s.setStringValue("Preset", "Blender (1 unit = ?)");
    s.setFloatValue("Scale", 1.0f);
    frame->loadOptions(s);
    EXPECT_EQ(frame->presetBox()->currentIndex(), 1);
    EXPECT_EQ(frame->scaleEdit()->text(), QStringLiteral("100"));
    EXPECT_FALSE(frame->swapBox()->isChecked());
    EXPECT_FALSE(frame->scaleEdit()->isEnabled());
}

TEST_F(ObjOptionsFrame, UnknownPresetLeavesTheCurrentItem) {
    frame->presetBox()->setCurrentIndex(5);
    for (const char *text : {"Nonsense", "maya (1 unit = 1cm)", ""}) {
        OvFileIOSettings s;
        s.setStringValue("Preset", text);
        frame->loadOptions(s);
        EXPECT_EQ(frame->presetBox()->currentIndex(), 5) << text;
    }
}

TEST_F(ObjOptionsFrame, UncheckedGroupsDisablesButKeepsChildStates) {
    frame->uvBox()->setChecked(true);
    frame->surfacesBox()->setChecked(false);
    frame->materialLibraryBox()->setChecked(true);
    frame->groupsBox()->setChecked(false);

    EXPECT_FALSE(frame->uvBox()->isEnabled());
    EXPECT_FALSE(frame->surfacesBox()->isEnabled());
    EXPECT_FALSE(frame->materialLibraryBox()->isEnabled());
    OvFileIOSettings s = saved();
    EXPECT_FALSE(s.getBoolValue("IncludeG", true));
    EXPECT_TRUE(s.getBoolValue("IncludeVT", false));
    EXPECT_FALSE(s.getBoolValue("IncludeUsemtl", true));
    EXPECT_TRUE(s.getBoolValue("IncludeMtllib", false));

    frame->groupsBox()->setChecked(true);
    EXPECT_TRUE(frame->uvBox()->isEnabled());
    EXPECT_TRUE(frame->surfacesBox()->isEnabled());
}

TEST_F(ObjOptionsFrame, CaptionTitleAndHelpRegistration) {
    EXPECT_EQ(frame->windowTitle(), QStringLiteral("Import : Wavefront Object (.obj)"));
    EXPECT_EQ(frame->getTitle(), QStringLiteral("OBJ Import Options"));
    EXPECT_EQ(frame->parentWidget(), nullptr);

    const QStringList expected = {"OBJImpPreset", "OBJImpScale", "OBJSwapYZ",      "OBJImpVerts",
                                  "OBJImpGroups", "OBJImpUVs",   "OBJImpSurfaces", "OBJImpMatLibrary"};
    QStringList names = OvApp::getHelpMgr()->registeredNames();
    names.sort();
    QStringList sortedExpected = expected;
    sortedExpected.sort();
    EXPECT_EQ(names, sortedExpected);
    for (const QString &name : expected)
        EXPECT_NE(frame->findChild<QWidget *>(name), nullptr) << name.toStdString();

    auto *verts = frame->findChild<QCheckBox *>(QStringLiteral("OBJImpVerts"));
    ASSERT_NE(verts, nullptr);
    EXPECT_TRUE(verts->isChecked());
    EXPECT_FALSE(verts->isEnabled());
    // The include controls nest: surfaces inside groups, the library inside surfaces.
    EXPECT_EQ(frame->uvBox()->parentWidget(), frame->groupsBox());
    EXPECT_EQ(frame->surfacesBox()->parentWidget(), frame->groupsBox());
    EXPECT_EQ(frame->materialLibraryBox()->parentWidget(), frame->surfacesBox());
}

TEST(ObjImporterOptions, NewFrameEachCallAndDefaults) {
    OvApp::reset();
    OvObjImporter importer;
    std::unique_ptr<OvFileIOFrame> a(importer.getOptionsFrame());
    std::unique_ptr<OvFileIOFrame> b(importer.getOptionsFrame());
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(a.get(), b.get());
    EXPECT_TRUE(a->inherits("OvObjImportFrame"));

    OvFileIOSettings s;
    importer.getDefaultOptions(&s);
    QStringList keys = s.keys();
    keys.sort();
    EXPECT_EQ(keys, QStringList({"IncludeG", "IncludeMtllib", "IncludeUsemtl", "IncludeVT", "Preset", "Scale",
                                 "SwapYZ"}));
    EXPECT_EQ(s.getStringValue("Preset"), QStringLiteral("Talven (1 unit = 8ft)"));
    EXPECT_FLOAT_EQ(s.getFloatValue("Scale"), 243.84f);
    EXPECT_FALSE(s.getBoolValue("SwapYZ", true));
    for (const char *key : {"IncludeG", "IncludeVT", "IncludeUsemtl", "IncludeMtllib"})
        EXPECT_TRUE(s.getBoolValue(key, false)) << key;

    // The defaults shown in a frame: the Talven preset at 24384 percent.
    a->loadOptions(s);
    auto *frame = static_cast<OvObjImportFrame *>(a.get());
    EXPECT_EQ(frame->presetBox()->currentIndex(), 2);
    EXPECT_EQ(frame->scaleEdit()->text(), QStringLiteral("24384"));
}

} // namespace
