#pragma once
// Loads an importer plug-in with the platform loader and runs imports through its factories.

#include <QString>
#include <QStringList>
#include <QTextStream>

class OvPlugin;
class OvImporter;

struct HostOptions {
    QString pluginPath;
    QStringList contentDirs;
    QStringList options; // KEY=VALUE overrides of the importer's defaults
};

struct ImportOutcome {
    bool ran = false;          // an importer's read ran
    bool usageProblem = false; // no importer for the file, or a bad option
    unsigned result = 0;
    QString importer;
    QString message;
};

class PluginHost {
public:
    PluginHost() = default;
    ~PluginHost();
    PluginHost(const PluginHost &) = delete;
    PluginHost &operator=(const PluginHost &) = delete;

    bool load(const QString &path, QString *error);
    OvPlugin *plugin() const { return m_plugin; }
    uint32_t sdkVersion() const { return m_sdkVersion; }
    void listImporters(QTextStream &out) const;
    // A new importer (owned by the caller) whose recognize accepts the file, or null.
    OvImporter *importerFor(const QString &file, QString *className) const;
    ImportOutcome import(const QString &file, const HostOptions &options);

private:
    void *m_handle = nullptr;
    OvPlugin *m_plugin = nullptr;
    uint32_t m_sdkVersion = 0;
};

QString describeResult(unsigned result);
