// The plug-in's exported entry points and its definition, built when the library is loaded.
#include "Factories.h"

#include <memory>

#define OV_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

const char *const kPoserFactoryGuid = "{6B1D5E2A-3C47-4F0B-9A81-52E7C0D4A913}";
const char *const kObjFactoryGuid = "{0F9C2B74-81DA-4E36-B5C2-7A3E19D6F058}";

const char *const kDescription =
    "Provides the ability to import Poser format assets (pz3, pz2, cr2, lt2, cm2, pp2, fc2, hd2, hr2 - and "
    "thier compressed counterparts). Additionally provides the ability import the ascii Wavefront Object "
    "(.obj) format.<br><br>When used by the Poser importer, the OBJ importer provides no options. When "
    "executed normally, the OBJ importer provides options for adjusting scale, swapping the orientation of "
    "the Y and Z axes (to compenstate for applications that assume the +Z axis is up), and reading (or not) "
    "group/UV/material/material library statements. Normals are ignored, as Velmora dynamically calculates "
    "them. Vertex statements are always read. In the material library file (.mtl), map paths are supported "
    "as relative as well as absolute paths (paths with spaces should be enclosed by quotes).<br><br>OBJ "
    "supported keywords:<br>v, vt, g, f, usemtl, mtllib<br><br>MTL supported keywords:<br>newmtl, Ni, Ns, "
    "Ka, Kd, Ks, Km, Tr, d, map_Ka, map_Kd, map_Ks, map_bump, map_D, map_refl";

// Members are built in declaration order and destroyed in reverse at unload: the OBJ factory, the
// Poser factory, then the definition.
struct PluginRegistry {
    OvPlugin definition{QStringLiteral("Poser Importers"), QString(), QString(), 0};
    std::unique_ptr<OvPZ3ImporterFactory> poserFactory;
    std::unique_ptr<OvObjImporterFactory> objFactory;

    PluginRegistry() {
        definition.setAuthor(QStringLiteral("Orvane 3D, Inc"));
        definition.setVersion(0x01030100);
        definition.setDescription(QString::fromLatin1(kDescription));
        OvGUID poserId(kPoserFactoryGuid);
        poserFactory.reset(new OvPZ3ImporterFactory(poserId));
        definition.addClassFactory(poserFactory.get());
        OvGUID objId(kObjFactoryGuid);
        objFactory.reset(new OvObjImporterFactory(objId));
        definition.addClassFactory(objFactory.get());
    }
    ~PluginRegistry() {
        objFactory.reset();
        poserFactory.reset();
    }
};

PluginRegistry registry;

} // namespace

OV_EXPORT uint32_t getSDKVersion() {
    return OV_SDK_VERSION;
}

OV_EXPORT OvPlugin *getPluginDefinition() {
    return &registry.definition;
}
