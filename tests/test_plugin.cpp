// The plug-in module as the host sees it: loaded with the platform loader, reached only through its
// two exported functions and the objects they hand out. The test binary also contains the importer
// code, so the module is loaded RTLD_LOCAL and its classes are identified by meta-object name.
#include <OvImporter.h>
#include <OvPlugin.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

class PluginShell : public ::testing::Test {
protected:
    // Loaded once and never unloaded: importers made by the module must not outlive its code.
    static void SetUpTestSuite() {
        if (!handle)
            handle = dlopen(OV_BIN_DIR "/PoserImporters.so", RTLD_NOW | RTLD_LOCAL);
    }

    void SetUp() override {
        ASSERT_NE(handle, nullptr) << dlerror();
        sdkVersion = reinterpret_cast<OvGetSDKVersionFn>(dlsym(handle, "getSDKVersion"));
        auto definition = reinterpret_cast<OvGetPluginDefinitionFn>(dlsym(handle, "getPluginDefinition"));
        ASSERT_NE(sdkVersion, nullptr);
        ASSERT_NE(definition, nullptr);
        plugin = definition();
        ASSERT_NE(plugin, nullptr);
        EXPECT_EQ(definition(), plugin) << "one definition for the module's lifetime";
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
    OvGetSDKVersionFn sdkVersion = nullptr;
    OvPlugin *plugin = nullptr;
};

TEST_F(PluginShell, EntryPointsDescribeThePlugin) {
    EXPECT_EQ(sdkVersion(), 0x02000000u);
    EXPECT_EQ(plugin->getName(), QStringLiteral("Poser Importers"));
    EXPECT_EQ(plugin->getAuthor(), QStringLiteral("Orvane 3D, Inc"));
    EXPECT_EQ(plugin->getVersion(), 0x01030100ul);
    // The description keeps the original's wording, slips included.
    const QString description = plugin->getDescription();
    EXPECT_TRUE(
        description.startsWith("Provides the ability to import Poser format assets (pz3, pz2, cr2, lt2, "
                               "cm2, pp2, fc2, hd2, hr2 - and thier compressed counterparts)."));
    EXPECT_TRUE(description.contains("(to compenstate for applications that assume the +Z axis is up)"));
    EXPECT_TRUE(
        description.endsWith("newmtl, Ni, Ns, Ka, Kd, Ks, Km, Tr, d, map_Ka, map_Kd, map_Ks, map_bump, "
                             "map_D, map_refl"));
}

TEST_F(PluginShell, FactoriesMakeThePoserThenTheObjImporter) {
    const char *classes[] = {"OvPZ3Importer", "OvObjImporter"};
    const char *descriptions[] = {"Poser Files", "Wavefront Object"};
    const QStringList extensions[] = {{"pz3", "pz2", "cr2", "lt2", "cm2", "pp2", "fc2", "hd2", "hr2", "pzz",
                                       "p2z", "crz", "ltz", "cmz", "ppz", "fcz", "hdz", "hrz"},
                                      {"obj", "obz"}};
    EXPECT_NE(plugin->getClassFactory(0)->getClassId(), plugin->getClassFactory(1)->getClassId());
    for (int i = 0; i < 2; ++i) {
        SCOPED_TRACE(classes[i]);
        OvClassFactory *factory = plugin->getClassFactory(i);
        EXPECT_STREQ(factory->getClassName(), classes[i]);
        EXPECT_FALSE(factory->getClassId().isNull());
        QObject owner;
        EXPECT_EQ(factory->createFor(&owner), nullptr);
        std::unique_ptr<OvImporter> importer = make(i), other = make(i);
        ASSERT_NE(importer, nullptr);
        EXPECT_NE(importer.get(), other.get());
        EXPECT_STREQ(importer->metaObject()->className(), classes[i]);
        EXPECT_EQ(importer->getDescription(), QString::fromLatin1(descriptions[i]));
        QStringList got;
        for (int e = 0; e < importer->getNumExtensions(); ++e)
            got << importer->getExtension(e);
        EXPECT_EQ(got, extensions[i]);
        EXPECT_TRUE(importer->getExtension(-1).isEmpty());
        EXPECT_TRUE(importer->getExtension(int(got.size())).isEmpty());
        for (const QString &ext : extensions[i])
            EXPECT_TRUE(importer->recognize("/some/dir/file." + ext)) << ext.toStdString();
        EXPECT_FALSE(importer->recognize("file." + extensions[i][0].toUpper()))
            << "extensions are case-sensitive";
        EXPECT_FALSE(importer->recognize("file." + extensions[1 - i][0]));
        EXPECT_FALSE(importer->recognize(extensions[i][0]));
    }
}

TEST_F(PluginShell, OnlyTheObjImporterHasOptions) {
    std::unique_ptr<OvImporter> poser = make(0), obj = make(1);
    EXPECT_EQ(poser->getOptionsFrame(), nullptr);
    OvFileIOSettings settings;
    poser->getDefaultOptions(&settings);
    EXPECT_TRUE(settings.keys().isEmpty());
    // The frame comes from the module's own copy of the class.
    std::unique_ptr<OvFileIOFrame> frame(obj->getOptionsFrame());
    ASSERT_NE(frame, nullptr);
    EXPECT_STREQ(frame->metaObject()->className(), "OvObjImportFrame");
    obj->getDefaultOptions(&settings);
    EXPECT_EQ(settings.keys().size(), 7);
    EXPECT_FLOAT_EQ(settings.getFloatValue("Scale"), 243.84f);
    EXPECT_TRUE(obj->inherits("OvGeometryImporter"));
}

} // namespace
