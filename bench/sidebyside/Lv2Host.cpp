#include "Lv2Host.h"

#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/parameters/parameters.h>

#include <cmath>
#include <cstring>

namespace lv2time
{
namespace
{
constexpr std::size_t kAtomBytes = 8192;

// Frees a lilv node at the end of a scope.
struct Node
{
    explicit Node(LilvNode* n) : node(n) {}
    ~Node() { lilv_node_free(node); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    LilvNode* node;
};
} // namespace

Lv2World::Lv2World(double rate, int block)
    : mRate(rate), mBlock(block), mRateValue(float(rate)), mBlockValue(block)
{
    mWorld = lilv_world_new();
    lilv_world_load_all(mWorld);

    mMap = {this, &Lv2World::MapThunk};
    mUnmap = {this, &Lv2World::UnmapThunk};
    const LV2_URID atomInt = Map(LV2_ATOM__Int);
    const LV2_URID atomFloat = Map(LV2_ATOM__Float);
    const auto option = [&](const char* key, std::uint32_t size, LV2_URID type, const void* value) {
        mOptions.push_back({LV2_OPTIONS_INSTANCE, 0, Map(key), size, type, value});
    };
    option(LV2_BUF_SIZE__minBlockLength, sizeof(std::int32_t), atomInt, &mBlockValue);
    option(LV2_BUF_SIZE__maxBlockLength, sizeof(std::int32_t), atomInt, &mBlockValue);
    option(LV2_BUF_SIZE__nominalBlockLength, sizeof(std::int32_t), atomInt, &mBlockValue);
    option(LV2_PARAMETERS__sampleRate, sizeof(float), atomFloat, &mRateValue);
    mOptions.push_back({LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr});

    mFeatureStore = {{LV2_URID__map, &mMap},
                     {LV2_URID__unmap, &mUnmap},
                     {LV2_OPTIONS__options, mOptions.data()},
                     {LV2_BUF_SIZE__boundedBlockLength, nullptr},
                     {LV2_BUF_SIZE__fixedBlockLength, nullptr},
                     {LV2_BUF_SIZE__powerOf2BlockLength, nullptr}};
    for (const LV2_Feature& f : mFeatureStore)
        mFeatures.push_back(&f);
}

Lv2World::~Lv2World()
{
    lilv_world_free(mWorld);
}

LV2_URID Lv2World::Map(const char* uri)
{
    const auto it = mIds.find(uri);
    if (it != mIds.end()) return it->second;
    mUris.emplace_back(uri);
    const auto id = static_cast<LV2_URID>(mUris.size());
    mIds.emplace(uri, id);
    return id;
}

LV2_URID Lv2World::MapThunk(LV2_URID_Map_Handle handle, const char* uri)
{
    return static_cast<Lv2World*>(handle)->Map(uri);
}

const char* Lv2World::UnmapThunk(LV2_URID_Unmap_Handle handle, LV2_URID urid)
{
    const auto* world = static_cast<Lv2World*>(handle);
    return urid >= 1 && urid <= world->mUris.size() ? world->mUris[urid - 1].c_str() : nullptr;
}

std::unique_ptr<Lv2Instance> Lv2Instance::Create(Lv2World& world, const std::string& uri,
                                                 const std::map<std::string, float>& controls,
                                                 std::string& error)
{
    LilvWorld* w = world.World();
    Node uriNode(lilv_new_uri(w, uri.c_str()));
    const LilvPlugin* plugin = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(w), uriNode.node);
    if (plugin == nullptr)
    {
        error = "no LV2 plug-in " + uri + " (is its package installed?)";
        return nullptr;
    }
    std::unique_ptr<Lv2Instance> self(new Lv2Instance());
    Node name(lilv_plugin_get_name(plugin));
    self->mName = lilv_node_as_string(name.node);
    self->mSequence = world.Map(LV2_ATOM__Sequence);
    self->mChunk = world.Map(LV2_ATOM__Chunk);

    self->mFeatures = world.Features();
    self->mFeatures.push_back(&self->mScheduleFeature);
    self->mFeatures.push_back(nullptr);
    self->mInstance = lilv_plugin_instantiate(plugin, world.Rate(), self->mFeatures.data());
    if (self->mInstance == nullptr)
    {
        error = "could not instantiate " + uri;
        return nullptr;
    }
    self->mWorker = static_cast<const LV2_Worker_Interface*>(
        lilv_instance_get_extension_data(self->mInstance, LV2_WORKER__interface));

    Node audioClass(lilv_new_uri(w, LV2_CORE__AudioPort));
    Node controlClass(lilv_new_uri(w, LV2_CORE__ControlPort));
    Node cvClass(lilv_new_uri(w, LV2_CORE__CVPort));
    Node atomClass(lilv_new_uri(w, LV2_ATOM__AtomPort));
    Node inputClass(lilv_new_uri(w, LV2_CORE__InputPort));

    const std::uint32_t ports = lilv_plugin_get_num_ports(plugin);
    std::vector<float> defaults(ports), minimum(ports);
    lilv_plugin_get_port_ranges_float(plugin, minimum.data(), nullptr, defaults.data());
    self->mControls.assign(ports, 0.0f);
    self->mCv.reserve(ports);
    self->mAtoms.reserve(ports);
    const auto block = static_cast<std::size_t>(world.Block());
    self->mScratchIn.assign(block, 0.0f);
    self->mScratchOut.assign(block, 0.0f);
    std::size_t controlsUsed = 0;
    for (std::uint32_t i = 0; i < ports; ++i)
    {
        const LilvPort* port = lilv_plugin_get_port_by_index(plugin, i);
        const bool input = lilv_port_is_a(plugin, port, inputClass.node);
        const std::string symbol = lilv_node_as_string(lilv_port_get_symbol(plugin, port));
        if (lilv_port_is_a(plugin, port, audioClass.node))
        {
            (input ? self->mAudioIn : self->mAudioOut).push_back(i);
        }
        else if (lilv_port_is_a(plugin, port, controlClass.node))
        {
            float v = std::isnan(defaults[i]) ? (std::isnan(minimum[i]) ? 0.0f : minimum[i]) : defaults[i];
            if (const auto it = controls.find(symbol); input && it != controls.end())
            {
                v = it->second;
                ++controlsUsed;
            }
            self->mControls[i] = v;
            lilv_instance_connect_port(self->mInstance, i, &self->mControls[i]);
        }
        else if (lilv_port_is_a(plugin, port, cvClass.node))
        {
            self->mCv.emplace_back(block, 0.0f);
            lilv_instance_connect_port(self->mInstance, i, self->mCv.back().data());
        }
        else if (lilv_port_is_a(plugin, port, atomClass.node))
        {
            self->mAtoms.push_back({std::vector<std::uint64_t>(kAtomBytes / 8, 0), input});
            lilv_instance_connect_port(self->mInstance, i, self->mAtoms.back().buffer.data());
        }
        else
        {
            lilv_instance_connect_port(self->mInstance, i, nullptr);
        }
    }
    if (controlsUsed != controls.size())
    {
        error = uri + ": a control set by symbol is not an input of the plug-in";
        return nullptr;
    }
    if (self->mAudioIn.empty() || self->mAudioOut.empty())
    {
        error = uri + ": no audio input or output";
        return nullptr;
    }
    lilv_instance_activate(self->mInstance);
    return self;
}

Lv2Instance::~Lv2Instance()
{
    if (mInstance == nullptr) return;
    lilv_instance_deactivate(mInstance);
    lilv_instance_free(mInstance);
}

void Lv2Instance::Run(const float* inL, const float* inR, float* outL, float* outR)
{
    // Audio is connected on every call, as hosts with moving buffers do.
    for (std::size_t k = 0; k < mAudioIn.size(); ++k)
    {
        const float* src = k == 0 ? inL : k == 1 ? inR : mScratchIn.data();
        lilv_instance_connect_port(mInstance, mAudioIn[k], const_cast<float*>(src));
    }
    for (std::size_t k = 0; k < mAudioOut.size(); ++k)
    {
        float* dst = k == 0 ? outL : k == 1 ? outR : mScratchOut.data();
        lilv_instance_connect_port(mInstance, mAudioOut[k], dst);
    }
    for (AtomPort& a : mAtoms)
    {
        auto* atom = reinterpret_cast<LV2_Atom*>(a.buffer.data());
        if (a.input)
        {
            atom->size = sizeof(LV2_Atom_Sequence_Body);
            atom->type = mSequence;
            auto* body = reinterpret_cast<LV2_Atom_Sequence_Body*>(atom + 1);
            body->unit = 0;
            body->pad = 0;
        }
        else
        {
            atom->size = kAtomBytes - sizeof(LV2_Atom);
            atom->type = mChunk;
        }
    }
    lilv_instance_run(mInstance, static_cast<std::uint32_t>(mScratchIn.size()));
    ServiceWorker();
    if (mAudioOut.size() == 1) std::memcpy(outR, outL, mScratchIn.size() * sizeof(float));
}

LV2_Worker_Status Lv2Instance::Schedule(LV2_Worker_Schedule_Handle handle, std::uint32_t size,
                                        const void* data)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    static_cast<Lv2Instance*>(handle)->mJobs.emplace_back(bytes, bytes + size);
    return LV2_WORKER_SUCCESS;
}

LV2_Worker_Status Lv2Instance::Respond(LV2_Worker_Respond_Handle handle, std::uint32_t size, const void* data)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    static_cast<Lv2Instance*>(handle)->mResponses.emplace_back(bytes, bytes + size);
    return LV2_WORKER_SUCCESS;
}

void Lv2Instance::ServiceWorker()
{
    if (mWorker == nullptr || mJobs.empty()) return;
    LV2_Handle handle = lilv_instance_get_handle(mInstance);
    // Work may schedule more work; the responses go back once all of it is done.
    while (!mJobs.empty())
    {
        std::vector<std::vector<std::uint8_t>> jobs;
        jobs.swap(mJobs);
        for (const auto& job : jobs)
            mWorker->work(handle, &Lv2Instance::Respond, this, static_cast<std::uint32_t>(job.size()),
                          job.data());
    }
    for (const auto& response : mResponses)
        mWorker->work_response(handle, static_cast<std::uint32_t>(response.size()), response.data());
    mResponses.clear();
    if (mWorker->end_run != nullptr) mWorker->end_run(handle);
}
} // namespace lv2time
