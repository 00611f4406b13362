#pragma once
// Base classes of file importers and their option frames.

#include "OvFileIO.h"
#include "OvSettings.h"
#include <QWidget>

class OvShape;

// A panel of import options the host shows before an import.
class OvFileIOFrame : public QWidget {
    Q_OBJECT
public:
    explicit OvFileIOFrame(const QString &title, QWidget *parent = nullptr, const char *name = nullptr);
    QString getTitle() const { return m_title; }
    virtual void loadOptions(const OvFileIOSettings &settings) = 0;
    virtual void saveOptions(OvFileIOSettings &settings) = 0;

private:
    QString m_title;
};

class OvImporter : public OvFileIO {
    Q_OBJECT
public:
    // Result codes of read operations.
    enum Result : unsigned {
        ResultOk = 0,
        ResultStopped = 0x62,
        ResultHandCancelled = 100,
        ResultMaterialLibraryFailed = 0x65,
        ResultCannotOpen = 0x200,
    };

    explicit OvImporter(QObject *parent = nullptr) : OvFileIO(parent) {}

    // A new options frame owned by the caller, or null when the importer has no options.
    virtual OvFileIOFrame *getOptionsFrame() = 0;
    virtual void getDefaultOptions(OvFileIOSettings *settings) = 0;
    virtual bool recognize(const QString &fileName) = 0;
    virtual int getNumExtensions() = 0;
    virtual QString getExtension(int i) = 0;
    virtual QString getDescription() = 0;

public slots:
    // Reads a file into the host scene.
    virtual unsigned int read(const QString &fileName, const OvFileIOSettings &options) = 0;
};

// Importers of a single shape. The host reads the shape and puts it on a new node of its scene.
class OvGeometryImporter : public OvImporter {
    Q_OBJECT
public:
    explicit OvGeometryImporter(QObject *parent = nullptr) : OvImporter(parent) {}

public slots:
    virtual unsigned int readShape(const QString &fileName, OvShape **shape,
                                   const OvFileIOSettings &settings) = 0;
    unsigned int read(const QString &fileName, const OvFileIOSettings &options) override;
};
