#include "PluginHost.h"

#include <OvApp.h>
#include <OvImporter.h>
#include <OvPlugin.h>
#include <QFile>
#include <QFileInfo>
#include <dlfcn.h>
#include <memory>

PluginHost::~PluginHost() {
    // The plug-in's static objects live until unload; the scene may still hold objects it made,
    // so the library stays loaded for the life of the process.
}

bool PluginHost::load(const QString &path, QString *error) {
    m_handle = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    if (!m_handle) {
        *error = QStringLiteral("cannot load plug-in %1: %2").arg(path, QString::fromLocal8Bit(dlerror()));
        return false;
    }
    auto version = reinterpret_cast<OvGetSDKVersionFn>(dlsym(m_handle, "getSDKVersion"));
    auto definition = reinterpret_cast<OvGetPluginDefinitionFn>(dlsym(m_handle, "getPluginDefinition"));
    if (!version || !definition) {
        *error =
            QStringLiteral("%1 is not an importer plug-in: getSDKVersion or getPluginDefinition is missing")
                .arg(path);
        return false;
    }
    m_sdkVersion = version();
    if ((m_sdkVersion >> 24) != (OV_SDK_VERSION >> 24)) {
        *error = QStringLiteral("plug-in %1 was built for SDK version 0x%2, this host implements 0x%3")
                     .arg(path)
                     .arg(m_sdkVersion, 8, 16, QLatin1Char('0'))
                     .arg(OV_SDK_VERSION, 8, 16, QLatin1Char('0'));
        return false;
    }
    m_plugin = definition();
    if (!m_plugin) {
        *error = QStringLiteral("plug-in %1 returned no definition").arg(path);
        return false;
    }
    return true;
}

void PluginHost::listImporters(QTextStream &out) const {
    out << m_plugin->getName() << " by " << m_plugin->getAuthor() << ", version "
        << QStringLiteral("%1.%2.%3.%4")
               .arg((m_plugin->getVersion() >> 24) & 255)
               .arg((m_plugin->getVersion() >> 16) & 255)
               .arg((m_plugin->getVersion() >> 8) & 255)
               .arg(m_plugin->getVersion() & 255)
        << " (SDK 0x" << QString::number(m_sdkVersion, 16) << ")\n";
    for (int i = 0; i < m_plugin->getNumClassFactories(); ++i) {
        OvClassFactory *factory = m_plugin->getClassFactory(i);
        out << i << ": " << factory->getClassName() << " " << factory->getClassId().toString() << "\n";
        std::unique_ptr<OvBase> object(factory->create());
        auto *importer = qobject_cast<OvImporter *>(object.get());
        if (!importer)
            continue;
        QStringList exts;
        for (int e = 0; e < importer->getNumExtensions(); ++e)
            exts << importer->getExtension(e);
        out << "   " << importer->getDescription() << ": " << exts.join(QLatin1Char(' ')) << "\n";
    }
}

OvImporter *PluginHost::importerFor(const QString &file, QString *className) const {
    for (int i = 0; i < m_plugin->getNumClassFactories(); ++i) {
        OvClassFactory *factory = m_plugin->getClassFactory(i);
        std::unique_ptr<OvBase> object(factory->create());
        auto *importer = qobject_cast<OvImporter *>(object.get());
        if (importer && importer->recognize(file)) {
            if (className)
                *className = QString::fromLatin1(factory->getClassName());
            object.release();
            return importer;
        }
    }
    return nullptr;
}

static bool applyOption(OvFileIOSettings &settings, const QString &assignment, QString *error) {
    int eq = assignment.indexOf(QLatin1Char('='));
    QString key = assignment.left(eq), text = assignment.mid(eq + 1);
    QVariant def = settings.value(key);
    if (!settings.hasValue(key)) {
        *error = QStringLiteral("the importer has no option %1").arg(key);
        return false;
    }
    if (def.typeId() == QMetaType::Bool) {
        QString t = text.toLower();
        if (t == QLatin1String("true") || t == QLatin1String("1") || t == QLatin1String("yes") ||
            t == QLatin1String("on"))
            settings.setBoolValue(key, true);
        else if (t == QLatin1String("false") || t == QLatin1String("0") || t == QLatin1String("no") ||
                 t == QLatin1String("off"))
            settings.setBoolValue(key, false);
        else {
            *error = QStringLiteral("option %1 takes true or false, not %2").arg(key, text);
            return false;
        }
    } else if (def.typeId() == QMetaType::Float || def.typeId() == QMetaType::Double) {
        bool ok = false;
        float v = text.toFloat(&ok);
        if (!ok) {
            *error = QStringLiteral("option %1 takes a number, not %2").arg(key, text);
            return false;
        }
        settings.setFloatValue(key, v);
    } else {
        settings.setStringValue(key, text);
    }
    return true;
}

ImportOutcome PluginHost::import(const QString &file, const HostOptions &options) {
    ImportOutcome outcome;
    // Imports of one run share the folders: each is added once.
    for (const QString &dir : options.contentDirs) {
        const QString path = QFileInfo(dir).absoluteFilePath();
        if (!OvApp::getContentMgr()->poserDirectories().contains(path))
            OvApp::getContentMgr()->addPoserDirectory(path);
    }
    std::unique_ptr<OvImporter> importer(importerFor(file, &outcome.importer));
    if (!importer) {
        outcome.usageProblem = true;
        outcome.message = QStringLiteral("no importer of %1 recognizes %2").arg(m_plugin->getName(), file);
        return outcome;
    }
    OvFileIOSettings settings;
    importer->getDefaultOptions(&settings);
    for (const QString &assignment : options.options) {
        QString error;
        if (!applyOption(settings, assignment, &error)) {
            outcome.usageProblem = true;
            outcome.message = error;
            return outcome;
        }
    }
    try {
        outcome.result = importer->read(file, settings);
    } catch (const QString &message) {
        outcome.message = QStringLiteral("the import was abandoned: %1").arg(message);
        return outcome;
    } catch (...) {
        outcome.message = QStringLiteral("the import was abandoned by an unexpected error");
        return outcome;
    }
    outcome.ran = true;
    return outcome;
}

QString describeResult(unsigned result) {
    switch (result) {
    case 0:
        return QStringLiteral("success");
    case OvImporter::ResultStopped:
        return QStringLiteral("result 0x62: the import was stopped by an error in the file");
    case OvImporter::ResultHandCancelled:
        return QStringLiteral("result 100: the hand question was cancelled");
    case OvImporter::ResultMaterialLibraryFailed:
        return QStringLiteral("result 0x65: the material library could not be read");
    case OvImporter::ResultCannotOpen:
        return QStringLiteral("result 0x200: the file cannot be opened or read");
    default:
        return QStringLiteral("result 0x%1").arg(result, 0, 16);
    }
}
