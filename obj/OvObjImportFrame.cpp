#include "OvObjImportFrame.h"

#include <OvApp.h>
#include <QCheckBox>
#include <QDoubleValidator>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QVBoxLayout>
#include <text/ObjOptions.h>

namespace {

// Scale text (percent) and swap state of each preset; an empty text leaves the field to the user.
struct Preset {
    const char *text;
    const char *scale;
};

const Preset kPresets[OvPresetBox::NumPresets] = {
    {QT_TRANSLATE_NOOP("OvPresetBox", "Custom (1 unit = 1cm)"), nullptr},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Blender (1 unit = ?)"), "5000"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Talven (1 unit = 8ft)"), "24384"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Cinema 4D (1 unit = 1m)"), "10000"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Morvic (1 unit = 1in)"), "254"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Plentor (1 unit = 1cm)"), "100"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Lightwave (1 unit = 1m)"), "10000"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "MAX (1 unit = 1m)"), "10000"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Maya (1 unit = 1cm)"), "100"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Mirai (1 unit = 1m)"), "10000"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Modo (1 unit = 1m)"), "10000"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Poser (1 unit = 8ft)"), "24384"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "Silo (1 unit = 10cm)"), "1000"},
    {QT_TRANSLATE_NOOP("OvPresetBox", "XSI (1 unit = ?)"), nullptr},
};

// The host style's margin and spacing for option frames.
int frameMetric(QWidget *w) {
    int m = w->style()->pixelMetric(QStyle::PixelMetric(0xF0000000), nullptr, w);
    return m > 0 ? m : 6;
}

} // namespace

OvPresetBox::OvPresetBox(QWidget *parent, const char *name) : QComboBox(parent) {
    setObjectName(QString::fromLatin1(name));
    for (const Preset &p : kPresets)
        addItem(tr(p.text));
}

OvObjImportFrame::OvObjImportFrame() : OvFileIOFrame(QStringLiteral("OBJ Import Options")) {
    setWindowTitle(tr("Import : Wavefront Object (.obj)"));
    const int metric = frameMetric(this);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(metric, metric, metric, metric);
    grid->setSpacing(metric);

    auto *presetLabel = new QLabel(tr("Preset :"), this);
    presetLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(presetLabel, 0, 0);
    m_preset = new OvPresetBox(this, "OBJImpPreset");
    grid->addWidget(m_preset, 0, 1);
    connect(m_preset, QOverload<int>::of(&QComboBox::activated), this, &OvObjImportFrame::updateOptions);

    auto *scaleLabel = new QLabel(tr("Scale :"), this);
    scaleLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(scaleLabel, 1, 0);
    m_scale = new QLineEdit(this);
    m_scale->setObjectName(QStringLiteral("OBJImpScale"));
    auto *validator = new QDoubleValidator(m_scale);
    validator->setDecimals(20);
    validator->setBottom(0.0);
    m_scale->setValidator(validator);
    grid->addWidget(m_scale, 1, 1);
    grid->addWidget(new QLabel(tr("%"), this), 1, 2);

    m_swapYZ = new QCheckBox(tr("Swap Y and Z Orientation"), this);
    m_swapYZ->setObjectName(QStringLiteral("OBJSwapYZ"));
    grid->addWidget(m_swapYZ, 2, 0, 1, 3);

    auto *verts = new QCheckBox(tr("Read Verticies (v)"), this);
    verts->setObjectName(QStringLiteral("OBJImpVerts"));
    verts->setChecked(true);
    verts->setEnabled(false); // vertices are always read
    grid->addWidget(verts, 3, 0, 1, 3);

    m_groups = new QGroupBox(tr("Read Groups (g)"), this);
    m_groups->setObjectName(QStringLiteral("OBJImpGroups"));
    m_groups->setCheckable(true);
    auto *groupsLayout = new QVBoxLayout(m_groups);
    groupsLayout->setContentsMargins(metric, metric, metric, metric);
    m_uvs = new QCheckBox(tr("Read UV Coordinates (vt)"), m_groups);
    m_uvs->setObjectName(QStringLiteral("OBJImpUVs"));
    groupsLayout->addWidget(m_uvs);
    m_surfaces = new QGroupBox(tr("Read Surfaces (usemtl)"), m_groups);
    m_surfaces->setObjectName(QStringLiteral("OBJImpSurfaces"));
    m_surfaces->setCheckable(true);
    auto *surfacesLayout = new QVBoxLayout(m_surfaces);
    surfacesLayout->setContentsMargins(metric, metric, metric, metric);
    m_matLibrary = new QCheckBox(tr("Read Material Library (mtllib && .mtl)"), m_surfaces);
    m_matLibrary->setObjectName(QStringLiteral("OBJImpMatLibrary"));
    surfacesLayout->addWidget(m_matLibrary);
    groupsLayout->addWidget(m_surfaces);
    grid->addWidget(m_groups, 4, 0, 1, 3);

    OvHelpMgr *help = OvApp::getHelpMgr();
    for (QWidget *w : std::initializer_list<QWidget *>{m_preset, m_scale, m_swapYZ, verts, m_groups, m_uvs,
                                                       m_surfaces, m_matLibrary})
        help->setOnlineHelp(w);
}

void OvObjImportFrame::updateOptions(int index) {
    const char *scale = index >= 0 && index < OvPresetBox::NumPresets ? kPresets[index].scale : nullptr;
    if (scale) {
        m_scale->setText(QString::fromLatin1(scale));
        m_groups->setChecked(true);
        m_uvs->setChecked(true);
        m_surfaces->setChecked(true);
        m_matLibrary->setChecked(true);
    } else {
        m_scale->setText(m_customScaleText);
    }
    m_scale->setEnabled(!(index >= 2 && index <= 12));
    m_swapYZ->setChecked(index == 1 || index == 7);
}

void OvObjImportFrame::updatePreset() {}

void OvObjImportFrame::loadOptions(const OvFileIOSettings &settings) {
    int item = m_preset->findText(settings.getStringValue(ObjOption::Preset, m_preset->itemText(2)));
    if (item >= 0)
        m_preset->setCurrentIndex(item); // setCurrentIndex does not emit activated
    m_scale->setText(QString::number(double(settings.getFloatValue(ObjOption::Scale, 1.0f)) * 100.0, 'g', 6));
    m_swapYZ->setChecked(settings.getBoolValue(ObjOption::SwapYZ, false));
    m_groups->setChecked(settings.getBoolValue(ObjOption::IncludeG, true));
    m_uvs->setChecked(settings.getBoolValue(ObjOption::IncludeVT, true));
    m_surfaces->setChecked(settings.getBoolValue(ObjOption::IncludeUsemtl, true));
    m_matLibrary->setChecked(settings.getBoolValue(ObjOption::IncludeMtllib, true));
}

void OvObjImportFrame::saveOptions(OvFileIOSettings &settings) {
    settings.setStringValue(ObjOption::Preset, m_preset->currentText());
    settings.setFloatValue(ObjOption::Scale, m_scale->text().toFloat() / 100.0f);
    settings.setBoolValue(ObjOption::SwapYZ, m_swapYZ->isChecked());
    settings.setBoolValue(ObjOption::IncludeG, m_groups->isChecked());
    settings.setBoolValue(ObjOption::IncludeVT, m_uvs->isChecked());
    settings.setBoolValue(ObjOption::IncludeUsemtl, m_surfaces->isChecked());
    settings.setBoolValue(ObjOption::IncludeMtllib, m_matLibrary->isChecked());
}
