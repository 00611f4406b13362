// The plug-in module as the host sees it: loaded with the platform loader, reached only through its
// two exported functions and the objects they hand out. The test binary also contains the importer
// code, so the module is loaded RTLD_LOCAL and its classes are identified by meta-object name.
#include <OvImporter.h>
#include <OvPlugin.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

const char *const kPluginPath = OV_BIN_DIR "/PoserImporters.so";

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

class PluginShell : public ::testing::Test {
protected:
    // Loaded once and never unloaded: importers made by the module must not outlive its code.
    static void SetUpTestSuite() {
        if (handle)
            return;
        handle = dlopen(kPluginPath, RTLD_NOW | RTLD_LOCAL);
        if (!handle) {
            loadError = dlerror();
            return;
        }
        sdkVersion = reinterpret_cast<OvGetSDKVersionFn>(dlsym(handle, "getSDKVersion"));
        definition = reinterpret_cast<OvGetPluginDefinitionFn>(dlsym(handle, "getPluginDefinition"));
    }

    void SetUp() override {
        ASSERT_NE(handle, nullptr) << loadError;
        ASSERT_NE(sdkVersion, nullptr);
        ASSERT_NE(definition, nullptr);
        plugin = definition();
        ASSERT_NE(plugin, nullptr);
        ASSERT_EQ(plugin->getNumClassFactories(), 2);
    }

    // A new importer from factory i, owned by the test.
    std::unique_ptr<OvImporter> make(int i) {
        std::unique_ptr<OvBase> object(plugin->getClassFactory(i)->create());
        auto *importer = qobject_cast<OvImporter *>(object.get());
        if (importer)
            object.release();
        return std::unique_ptr<OvImporter>(importer);
    }

    static inline void *handle = nullptr;
    static inline std::string loadError;
    static inline OvGetSDKVersionFn sdkVersion = nullptr;
    static inline OvGetPluginDefinitionFn definition = nullptr;
    OvPlugin *plugin = nullptr;
};

TEST_F(PluginShell, EntryPointsAreStable) {
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(sdkVersion(), 0x02000000u);
    EXPECT_EQ(definition(), plugin);
    EXPECT_EQ(definition(), plugin);
}

TEST_F(PluginShell, DefinitionValues) {
    EXPECT_EQ(plugin->getName(), QStringLiteral("Poser Importers"));
    EXPECT_EQ(plugin->getAuthor(), QStringLiteral("Orvane 3D, Inc"));
    EXPECT_EQ(plugin->getVersion(), 0x01030100ul);
    EXPECT_EQ(plugin->getDescription(), QString::fromLatin1(kDescription));
}

TEST_F(PluginShell, PoserFactoryFirstThenObjWithDistinctIds) {
    OvClassFactory *poser = plugin->getClassFactory(0);
    OvClassFactory *obj = plugin->getClassFactory(1);
    ASSERT_NE(poser, nullptr);
    ASSERT_NE(obj, nullptr);
    EXPECT_STREQ(poser->getClassName(), "OvPZ3Importer");
    EXPECT_STREQ(obj->getClassName(), "OvObjImporter");
    EXPECT_FALSE(poser->getClassId().isNull());
    EXPECT_FALSE(obj->getClassId().isNull());
    EXPECT_NE(poser->getClassId(), obj->getClassId());
}

TEST_F(PluginShell, FactoriesCreateTheirClassAndRefuseCreateFor) {
    const char *classes[] = {"OvPZ3Importer", "OvObjImporter"};
    for (int i = 0; i < 2; ++i) {
        SCOPED_TRACE(classes[i]);
        std::unique_ptr<OvImporter> a = make(i), b = make(i);
        ASSERT_NE(a, nullptr);
        ASSERT_NE(b, nullptr);
        EXPECT_NE(a.get(), b.get());
        EXPECT_STREQ(a->metaObject()->className(), classes[i]);
        EXPECT_TRUE(a->inherits(classes[i]));
        EXPECT_FALSE(a->inherits(classes[1 - i]));

        QObject owner;
        EXPECT_EQ(plugin->getClassFactory(i)->createFor(&owner), nullptr);
        EXPECT_EQ(plugin->getClassFactory(i)->createFor(nullptr), nullptr);
    }
    EXPECT_TRUE(make(1)->inherits("OvGeometryImporter"));
}

TEST_F(PluginShell, PoserImporterExtensions) {
    std::unique_ptr<OvImporter> poser = make(0);
    ASSERT_NE(poser, nullptr);
    EXPECT_EQ(poser->getDescription(), QStringLiteral("Poser Files"));
    const char *exts[] = {"pz3", "pz2", "cr2", "lt2", "cm2", "pp2", "fc2", "hd2", "hr2",
                          "pzz", "p2z", "crz", "ltz", "cmz", "ppz", "fcz", "hdz", "hrz"};
    ASSERT_EQ(poser->getNumExtensions(), 18);
    for (int i = 0; i < 18; ++i) {
        EXPECT_EQ(poser->getExtension(i), QString::fromLatin1(exts[i])) << i;
        EXPECT_TRUE(poser->recognize(QStringLiteral("/some/dir/file.") + exts[i])) << exts[i];
    }
    EXPECT_TRUE(poser->getExtension(18).isEmpty());
    EXPECT_TRUE(poser->getExtension(-1).isEmpty());
    EXPECT_FALSE(poser->recognize(QStringLiteral("scene.PZ3")));
    EXPECT_FALSE(poser->recognize(QStringLiteral("model.obj")));
    EXPECT_FALSE(poser->recognize(QStringLiteral("pz3")));
    EXPECT_EQ(poser->getOptionsFrame(), nullptr);
    OvFileIOSettings settings;
    poser->getDefaultOptions(&settings);
    EXPECT_TRUE(settings.keys().isEmpty());
}

TEST_F(PluginShell, ObjImporterExtensionsAndFrame) {
    std::unique_ptr<OvImporter> obj = make(1);
    ASSERT_NE(obj, nullptr);
    EXPECT_EQ(obj->getDescription(), QStringLiteral("Wavefront Object"));
    ASSERT_EQ(obj->getNumExtensions(), 2);
    EXPECT_EQ(obj->getExtension(0), QStringLiteral("obj"));
    EXPECT_EQ(obj->getExtension(1), QStringLiteral("obz"));
    EXPECT_TRUE(obj->getExtension(2).isEmpty());
    EXPECT_TRUE(obj->recognize(QStringLiteral("/a/b/model.obj")));
    EXPECT_TRUE(obj->recognize(QStringLiteral("model.obz")));
    EXPECT_FALSE(obj->recognize(QStringLiteral("model.OBJ")));
    EXPECT_FALSE(obj->recognize(QStringLiteral("scene.pz3")));

    // The frame comes from the module's own copy of the class.
    std::unique_ptr<OvFileIOFrame> frame(obj->getOptionsFrame());
    ASSERT_NE(frame, nullptr);
    EXPECT_STREQ(frame->metaObject()->className(), "OvObjImportFrame");
    OvFileIOSettings settings;
    obj->getDefaultOptions(&settings);
    EXPECT_EQ(settings.keys().size(), 7);
    EXPECT_FLOAT_EQ(settings.getFloatValue(QStringLiteral("Scale")), 243.84f);
}

} // namespace
