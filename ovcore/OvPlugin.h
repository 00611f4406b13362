#pragma once
// The plug-in mechanism: a plug-in definition lists class factories; each creates one class.

#include "OvBase.h"
#include <QString>
#include <array>
#include <cstdint>
#include <vector>

class OvGUID {
public:
    OvGUID() { m_bytes.fill(0); }
    // Parses "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}" (braces optional); a malformed text gives the
    // null GUID.
    explicit OvGUID(const char *text);
    bool isNull() const;
    QString toString() const;
    bool operator==(const OvGUID &o) const { return m_bytes == o.m_bytes; }
    bool operator!=(const OvGUID &o) const { return m_bytes != o.m_bytes; }

private:
    std::array<uint8_t, 16> m_bytes;
};

class OvClassFactory {
public:
    OvClassFactory(const QMetaObject *metaObject, const OvGUID &classId)
        : m_metaObject(metaObject), m_classId(classId) {}
    virtual ~OvClassFactory() = default;
    // A new instance owned by the caller; null when it cannot be made.
    virtual OvBase *create() = 0;
    // Creation on behalf of another object; factories that do not support it return null.
    virtual OvBase *createFor(QObject *owner) = 0;

    const QMetaObject *getMetaObject() const { return m_metaObject; }
    const char *getClassName() const { return m_metaObject ? m_metaObject->className() : ""; }
    const OvGUID &getClassId() const { return m_classId; }

private:
    const QMetaObject *m_metaObject;
    OvGUID m_classId;
};

class OvPlugin {
public:
    OvPlugin(const QString &name, const QString &author, const QString &description, unsigned long version)
        : m_name(name), m_author(author), m_description(description), m_version(version) {}
    virtual ~OvPlugin() = default;

    const QString &getName() const { return m_name; }
    const QString &getAuthor() const { return m_author; }
    void setAuthor(const QString &author) { m_author = author; }
    const QString &getDescription() const { return m_description; }
    void setDescription(const QString &d) { m_description = d; }
    unsigned long getVersion() const { return m_version; }
    void setVersion(unsigned long v) { m_version = v; }

    // The plug-in keeps ownership of its factories.
    void addClassFactory(OvClassFactory *factory) { m_factories.push_back(factory); }
    int getNumClassFactories() const { return int(m_factories.size()); }
    OvClassFactory *getClassFactory(int i) const { return m_factories[size_t(i)]; }

private:
    QString m_name;
    QString m_author;
    QString m_description;
    unsigned long m_version;
    std::vector<OvClassFactory *> m_factories;
};

// Signatures of a plug-in's exported entry points.
extern "C" {
typedef uint32_t (*OvGetSDKVersionFn)();
typedef OvPlugin *(*OvGetPluginDefinitionFn)();
}

// The SDK version this host implements.
constexpr uint32_t OV_SDK_VERSION = 0x02000000u;
