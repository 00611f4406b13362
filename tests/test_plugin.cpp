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
    void SetUp() override {
        // Loaded once and never unloaded: importers made by the module must not outlive its code.
        static void *const handle = dlopen(OV_BIN_DIR "/PoserImporters.so", RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(handle, nullptr) << dlerror();
        sdkVersion = reinterpret_cast<OvGetSDKVersionFn>(dlsym(handle, "getSDKVersion"));
        auto definition = reinterpret_cast<OvGetPluginDefinitionFn>(dlsym(handle, "getPluginDefinition"));
        ASSERT_TRUE(sdkVersion && definition);
        plugin = definition();
        ASSERT_NE(plugin, nullptr);
        EXPECT_EQ(definition(), plugin) << "one definition for the module's lifetime";
        ASSERT_EQ(plugin->getNumClassFactories(), 2);
    }

    OvGetSDKVersionFn sdkVersion = nullptr;
    OvPlugin *plugin = nullptr;
};

TEST_F(PluginShell, EntryPointsDescribeThePlugin) {
    EXPECT_EQ(sdkVersion(), 0x02000000u);
    EXPECT_EQ(plugin->getName(), "Poser Importers");
    EXPECT_EQ(plugin->getAuthor(), "Orvane 3D, Inc");
    EXPECT_EQ(plugin->getVersion(), 0x01030100ul);
    // The description keeps the original's wording, slips included.
    const QString description = plugin->getDescription();
    EXPECT_TRUE(
        description.startsWith("Provides the ability to import Poser format assets (pz3, pz2, cr2, lt2, "
                               "cm2, pp2, fc2, hd2, hr2 - and thier compressed counterparts)."));
    EXPECT_TRUE(
        description.endsWith("Ka, Kd, Ks, Km, Tr, d, map_Ka, map_Kd, map_Ks, map_bump, map_D, map_refl"));
}

TEST_F(PluginShell, FactoriesMakeThePoserThenTheObjImporter) {
    const struct {
        const char *className, *description, *frame;
        QStringList extensions;
        int options;
    } importers[] = {
        // clang-format off
        {"OvPZ3Importer", "Poser Files", "", {"pz3", "pz2", "cr2", "lt2", "cm2", "pp2", "fc2", "hd2", "hr2", "pzz",
                                              "p2z", "crz", "ltz", "cmz", "ppz", "fcz", "hdz", "hrz"}, 0},
        // The frame comes from the module's own copy of the class.
        {"OvObjImporter", "Wavefront Object", "OvObjImportFrame", {"obj", "obz"}, 7},
        // clang-format on
    };
    EXPECT_NE(plugin->getClassFactory(0)->getClassId(), plugin->getClassFactory(1)->getClassId());
    for (int i = 0; i < 2; ++i) {
        const auto &c = importers[i];
        SCOPED_TRACE(c.className);
        QObject owner;
        EXPECT_EQ(plugin->getClassFactory(i)->createFor(&owner), nullptr);
        EXPECT_STREQ(plugin->getClassFactory(i)->getClassName(), c.className);
        std::unique_ptr<OvImporter> importer(
            qobject_cast<OvImporter *>(plugin->getClassFactory(i)->create()));
        ASSERT_NE(importer, nullptr);
        EXPECT_STREQ(importer->metaObject()->className(), c.className);
        EXPECT_EQ(importer->getDescription(), c.description);
        QStringList extensions;
        for (int e = 0; e <= importer->getNumExtensions(); ++e) // one past the end: empty
            extensions << importer->getExtension(e);
        EXPECT_EQ(extensions, c.extensions + QStringList{""});
        for (const QString &ext : c.extensions)
            EXPECT_TRUE(importer->recognize("/some/dir/file." + ext)) << ext.toStdString();
        EXPECT_FALSE(importer->recognize("file." + c.extensions[0].toUpper()))
            << "extensions are case-sensitive";
        EXPECT_FALSE(importer->recognize("file." + importers[1 - i].extensions[0]));
        std::unique_ptr<OvFileIOFrame> frame(importer->getOptionsFrame());
        EXPECT_STREQ(frame ? frame->metaObject()->className() : "", c.frame);
        OvFileIOSettings settings;
        importer->getDefaultOptions(&settings);
        EXPECT_EQ(settings.keys().size(), c.options);
    }
}

} // namespace
