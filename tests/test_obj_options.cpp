// The OBJ options frame as a user drives it: presets picked in the combo box, settings loaded into
// the controls and saved back; and the importer's default options.
#include <OvApp.h>
#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <gtest/gtest.h>
#include <memory>
#include <obj/OvObjImportFrame.h>
#include <obj/OvObjImporter.h>

namespace {

// The keys as saved settings spell them.
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
    // The five check boxes in the order of kBoolKeys.
    std::vector<bool> checks() const {
        return {frame->swapBox()->isChecked(), frame->groupsBox()->isChecked(), frame->uvBox()->isChecked(),
                frame->surfacesBox()->isChecked(), frame->materialLibraryBox()->isChecked()};
    }
    OvFileIOSettings saved() {
        OvFileIOSettings s;
        frame->saveOptions(s);
        return s;
    }

    std::unique_ptr<OvObjImportFrame> frame;
};

// Each preset starts from the opposite of what it should produce, so one that forgets to set
// something shows up. Real presets switch every include back on; Custom and XSI leave them alone.
TEST_F(ObjOptionsFrame, PresetsSetScaleSwapAndIncludes) {
    // clang-format off
    const struct { int index; const char *text, *scaleText; float scale; bool editable, swap; } presets[] = {
        {0, "Custom (1 unit = 1cm)", "", 0.0f, true, false},
        {1, "Blender (1 unit = ?)", "5000", 50.0f, true, true},
        {4, "Morvic (1 unit = 1in)", "254", 2.54f, false, false},
        {7, "MAX (1 unit = 1m)", "10000", 100.0f, false, true},
        {12, "Silo (1 unit = 10cm)", "1000", 10.0f, false, false},
        {13, "XSI (1 unit = ?)", "", 0.0f, true, false}};
    // clang-format on
    ASSERT_EQ(frame->presetBox()->count(), 14);
    for (const auto &row : presets) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(frame->presetBox()->itemText(row.index), QString::fromLatin1(row.text));
        frame->scaleEdit()->setText(QStringLiteral("777"));
        frame->scaleEdit()->setEnabled(!row.editable);
        frame->swapBox()->setChecked(!row.swap);
        setIncludes(false);
        choose(row.index);
        EXPECT_EQ(frame->scaleEdit()->text(), QString::fromLatin1(row.scaleText));
        EXPECT_EQ(frame->scaleEdit()->isEnabled(), row.editable);
        const bool on = row.scaleText[0] != '\0';
        EXPECT_EQ(checks(), std::vector<bool>({row.swap, on, on, on, on}));
        EXPECT_EQ(saved().getStringValue("Preset"), QString::fromLatin1(row.text));
        EXPECT_FLOAT_EQ(saved().getFloatValue("Scale", -1.0f), row.scale);
    }
}

// One key flipped at a time, so two controls wired to each other's key cannot pass. Loading selects
// the preset quietly: its own scale, swap and field state are not applied.
TEST_F(ObjOptionsFrame, LoadThenSaveKeepsEveryKey) {
    choose(2); // field read-only
    OvFileIOSettings in;
    in.setStringValue("Preset", "Blender (1 unit = ?)");
    in.setFloatValue("Scale", 2.54f);
    for (const char *flipped : kBoolKeys) {
        SCOPED_TRACE(flipped);
        for (const char *key : kBoolKeys)
            in.setBoolValue(key, key == flipped);
        frame->loadOptions(in);
        EXPECT_EQ(frame->presetBox()->currentIndex(), 1);
        EXPECT_EQ(frame->scaleEdit()->text(), QStringLiteral("254"));
        EXPECT_FALSE(frame->scaleEdit()->isEnabled());
        EXPECT_EQ(saved().keys(), in.keys());
        for (const QString &key : in.keys())
            EXPECT_EQ(saved().value(key), in.value(key)) << key.toStdString();
    }
    // Unchecking the groups disables the includes nested inside but keeps what they say.
    frame->groupsBox()->setChecked(false);
    EXPECT_FALSE(frame->uvBox()->isEnabled() || frame->materialLibraryBox()->isEnabled());
    EXPECT_TRUE(saved().getBoolValue("IncludeMtllib", false));
    // An unknown preset leaves the current item; missing keys load their defaults.
    in.setStringValue("Preset", "blender (1 unit = ?)"); // compared in full, letter case too
    frame->loadOptions(in);
    EXPECT_EQ(frame->presetBox()->currentIndex(), 1);
    frame->loadOptions(OvFileIOSettings());
    EXPECT_EQ(frame->scaleEdit()->text(), QStringLiteral("100"));
    EXPECT_EQ(frame->presetBox()->currentIndex(), 2);
    EXPECT_EQ(checks(), std::vector<bool>({false, true, true, true, true}));
    // The importer's defaults, shown: Talven at 24384 percent, Y up, every include on.
    setIncludes(false);
    in.clear();
    OvObjImporter().getDefaultOptions(&in);
    frame->loadOptions(in);
    EXPECT_EQ(frame->presetBox()->currentText() + " " + frame->scaleEdit()->text(),
              "Talven (1 unit = 8ft) 24384");
    EXPECT_EQ(checks(), std::vector<bool>({false, true, true, true, true}));
}

} // namespace
