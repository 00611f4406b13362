#pragma once
#include <OvImporter.h>
#include <QComboBox>

class QCheckBox;
class QGroupBox;
class QLineEdit;

// Unit presets of common 3D applications: how large one of their units is and whether Y and Z
// are swapped.
class OvPresetBox : public QComboBox {
    Q_OBJECT
public:
    OvPresetBox(QWidget *parent, const char *name);

    static constexpr int NumPresets = 14;
};

// Options of a user's OBJ import.
class OvObjImportFrame : public OvFileIOFrame {
    Q_OBJECT
public:
    OvObjImportFrame();

    void loadOptions(const OvFileIOSettings &settings) override;
    void saveOptions(OvFileIOSettings &settings) override;

    OvPresetBox *presetBox() const { return m_preset; }
    QLineEdit *scaleEdit() const { return m_scale; }
    QCheckBox *swapBox() const { return m_swapYZ; }
    QGroupBox *groupsBox() const { return m_groups; }
    QCheckBox *uvBox() const { return m_uvs; }
    QGroupBox *surfacesBox() const { return m_surfaces; }
    QCheckBox *materialLibraryBox() const { return m_matLibrary; }

public slots:
    void updateOptions(int index);
    void updatePreset();

private:
    QString m_reserved;
    QString m_customScaleText; // what indices 0 and 13 put into the scale field
    OvPresetBox *m_preset = nullptr;
    QLineEdit *m_scale = nullptr;
    QCheckBox *m_swapYZ = nullptr;
    QGroupBox *m_groups = nullptr;
    QCheckBox *m_uvs = nullptr;
    QGroupBox *m_surfaces = nullptr;
    QCheckBox *m_matLibrary = nullptr;
};
