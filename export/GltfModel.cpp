#include "GltfModel.h"

#include "Animation.h"
#include "ExportScene.h"
#include "GltfBuffer.h"
#include "GltfMeshes.h"
#include "GltfNames.h"
#include "Materials.h"
#include "Skins.h"

#include <OvMorph.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QSet>
#include <algorithm>
#include <map>

namespace {

template <size_t N> std::vector<double> toDoubles(const std::array<float, N> &a) {
    return std::vector<double>(a.begin(), a.end());
}

void setTransform(tinygltf::Node &node, const NodeTransform &t) {
    if (t.translation != std::array<float, 3>{0, 0, 0})
        node.translation = toDoubles(t.translation);
    if (t.rotation != std::array<float, 4>{0, 0, 0, 1})
        node.rotation = toDoubles(t.rotation);
    if (t.scale != std::array<float, 3>{1, 1, 1})
        node.scale = toDoubles(t.scale);
}

// A node that shows a mesh; where the mesh hangs and what animates its weights.
struct MeshNode {
    int node = -1;
    std::vector<const OvMorph *> morphs;
};

class Builder {
public:
    Builder(tinygltf::Model &model, const OvScene &scene, int time, ModelBuild &report)
        : m_model(model), m_scene(scene), m_time(time), m_report(report), m_buffer(model) {}
    void nodes();
    void meshes(MaterialWriter &materials);
    void animation();
    GltfBuffer &buffer() { return m_buffer; }
    int renamedNodes() const { return m_names.changed(); }

    ExportScene records;

private:
    int addNode(tinygltf::Node node, int parent);
    int timesAccessor(const std::vector<int> &times);
    void channel(int node, const char *path, const TrackPlan &plan, const std::vector<float> &values,
                 int width);
    void transformChannels(size_t i, const Timeline &timeline);

    tinygltf::Model &m_model;
    const OvScene &m_scene;
    int m_time;
    ModelBuild &m_report;
    GltfBuffer m_buffer;
    GltfNames m_names;
    std::vector<MeshNode> m_meshNodes;
    std::map<std::vector<int>, int> m_times;
    tinygltf::Animation m_animation;
};

int Builder::addNode(tinygltf::Node node, int parent) {
    m_model.nodes.push_back(std::move(node));
    const int index = int(m_model.nodes.size()) - 1;
    if (parent >= 0)
        m_model.nodes[size_t(parent)].children.push_back(index);
    else
        m_model.scenes[0].nodes.push_back(index);
    return index;
}

void Builder::nodes() {
    records = collectScene(m_scene);
    for (const ExportNode &n : records.nodes) {
        tinygltf::Node node;
        node.name = m_names.make(n.name, "node");
        setTransform(node, nodeTransformAt(n, m_time));
        addNode(std::move(node), n.parent);
    }
    QSet<const OvNode *> shown;
    for (const ExportShape &s : records.shapes)
        shown.insert(records.nodes[size_t(s.node)].source);
    for (const ExportFigure &f : records.figures)
        for (int joint : f.joints)
            if (!shown.contains(records.nodes[size_t(joint)].source))
                m_report.notes << QStringLiteral("bone %1 has no shape: a joint without geometry")
                                      .arg(records.nodes[size_t(joint)].name);
}

// At most what the shapes' meshes can take in the buffer (a corner is at most one vertex of 64
// bytes and one triangle's indices; a morph at most dense, or four vertices per delta sparse).
// Pages that stay unused cost nothing.
size_t bufferBound(const ExportScene &records) {
    QSet<const OvPolyMesh *> seen;
    size_t bytes = 0;
    for (const ExportShape &s : records.shapes) {
        if (seen.contains(s.mesh))
            continue;
        seen.insert(s.mesh);
        const size_t corners = size_t(s.mesh->getNumCorners());
        bytes += corners * (64 + 12) + 64;
        for (const OvMorph *m : s.morphs)
            bytes += std::min(12 * corners, 64 * size_t(m->getDeltas()->getNumDeltas())) + 64;
    }
    return bytes;
}

void Builder::meshes(MaterialWriter &materials) {
    m_buffer.reserve(bufferBound(records));
    const std::vector<int> skins = writeSkins(m_buffer, records);
    MeshWriter writer(m_buffer, materials, m_report);
    for (const ExportShape &s : records.shapes) {
        const ExportNode &n = records.nodes[size_t(s.node)];
        const std::string &nodeName = m_model.nodes[size_t(s.node)].name;
        const WrittenMesh written = writer.write(s, QString::fromStdString(nodeName), m_time);
        if (written.mesh < 0)
            continue;
        tinygltf::Node node;
        node.mesh = written.mesh;
        int at = -1;
        if (s.figure >= 0) { // skinned meshes hang at the top: the joints place them
            node.name = m_names.make(QString::fromStdString(nodeName) + QStringLiteral("_skin"), "skin");
            node.skin = skins[size_t(s.figure)];
            at = addNode(node, -1);
        } else if (n.origin == OvVec3()) {
            m_model.nodes[size_t(s.node)].mesh = written.mesh;
            at = s.node;
        } else { // the node turns about its origin, so its shape is moved back by it
            node.name = m_names.make(QString::fromStdString(nodeName) + QStringLiteral("_shape"), "shape");
            node.translation = {-n.origin[0] * kMetresPerHostUnit, -n.origin[1] * kMetresPerHostUnit,
                                -n.origin[2] * kMetresPerHostUnit};
            at = addNode(node, s.node);
        }
        if (!written.morphs.empty())
            m_meshNodes.push_back({at, written.morphs});
    }
}

} // namespace

namespace {

int Builder::timesAccessor(const std::vector<int> &times) {
    if (auto it = m_times.find(times); it != m_times.end())
        return it->second;
    std::vector<float> seconds;
    for (int t : times)
        seconds.push_back(hostSeconds(t));
    const int accessor = m_buffer.addFloats(seconds, 1, true);
    m_times[times] = accessor;
    return accessor;
}

void Builder::channel(int node, const char *path, const TrackPlan &plan, const std::vector<float> &values,
                      int width) {
    tinygltf::AnimationSampler sampler;
    sampler.input = timesAccessor(plan.times);
    sampler.output = m_buffer.addFloats(values, width, false);
    sampler.interpolation = plan.kind == TrackPlan::Kind::Step ? "STEP" : "LINEAR";
    m_animation.samplers.push_back(sampler);
    tinygltf::AnimationChannel c;
    c.sampler = int(m_animation.samplers.size()) - 1;
    c.target_node = node;
    c.target_path = path;
    m_animation.channels.push_back(c);
}

void Builder::transformChannels(size_t i, const Timeline &timeline) {
    const ExportNode &n = records.nodes[i];
    const std::vector<const OvFloatProperty *> groups[3] = {
        translationProperties(*n.source), rotationProperties(*n.source), scaleProperties(*n.source)};
    static const char *const paths[3] = {"translation", "rotation", "scale"};
    for (int g = 0; g < 3; ++g) {
        const TrackPlan plan = planTrack(groups[g], timeline, g != 1);
        if (plan.kind == TrackPlan::Kind::Static)
            continue;
        std::vector<float> values;
        for (int t : plan.times) {
            const NodeTransform at = nodeTransformAt(n, t);
            if (g == 0)
                values.insert(values.end(), at.translation.begin(), at.translation.end());
            else if (g == 1)
                values.insert(values.end(), at.rotation.begin(), at.rotation.end());
            else
                values.insert(values.end(), at.scale.begin(), at.scale.end());
        }
        channel(int(i), paths[g], plan, values, g == 1 ? 4 : 3);
    }
}

void Builder::animation() {
    std::vector<const OvFloatProperty *> all;
    for (const ExportNode &n : records.nodes)
        for (const auto &group :
             {translationProperties(*n.source), rotationProperties(*n.source), scaleProperties(*n.source)})
            all.insert(all.end(), group.begin(), group.end());
    for (const MeshNode &m : m_meshNodes)
        for (const OvMorph *morph : m.morphs)
            all.push_back(morph->getValueChannel());
    const Timeline timeline = makeTimeline(m_scene, all);
    for (size_t i = 0; i < records.nodes.size(); ++i)
        transformChannels(i, timeline);
    for (const MeshNode &m : m_meshNodes) {
        std::vector<const OvFloatProperty *> dials;
        for (const OvMorph *morph : m.morphs)
            dials.push_back(morph->getValueChannel());
        const TrackPlan plan = planTrack(dials, timeline, true);
        if (plan.kind == TrackPlan::Kind::Static)
            continue;
        std::vector<float> values;
        for (int t : plan.times)
            for (const OvFloatProperty *d : dials)
                values.push_back(d->getValueAt(t));
        channel(m.node, "weights", plan, values, 1);
    }
    if (!m_animation.channels.empty()) {
        m_animation.name = "Scene";
        m_model.animations.push_back(std::move(m_animation));
    }
}

} // namespace

ModelBuild buildModel(tinygltf::Model &model, const OvScene &scene, int time, const QString &outFile,
                      bool embed) {
    ModelBuild report;
    model.asset.version = "2.0";
    model.asset.generator = "ovimport";
    model.scenes.emplace_back();
    model.scenes[0].name = "Scene";
    model.defaultScene = 0;
    Builder builder(model, scene, time, report);
    builder.nodes();
    if (builder.records.shapes.empty()) {
        report.ok = false;
        report.errors << QStringLiteral("the scene has no meshes to export");
        return report;
    }
    MaterialWriter materials(builder.buffer(), outFile, embed);
    builder.meshes(materials);
    report.notes << materials.notes();
    report.sideFiles = materials.sideFiles();
    if (report.errors.isEmpty() && model.meshes.empty())
        report.errors << QStringLiteral("the scene has no faces to export");
    if (!report.errors.isEmpty()) {
        report.ok = false;
        return report;
    }
    builder.animation();
    if (builder.renamedNodes() > 0)
        report.notes << QStringLiteral("%1 node names were changed to letters, digits, '_' and '-'")
                            .arg(builder.renamedNodes());
    model.buffers[0].name = "data";
    return report;
}
