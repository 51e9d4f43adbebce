#pragma once
// A minimal LV2 host for timing other plug-ins beside ours: one lilv world with the features such
// plug-ins ask for (URID map and unmap, options with the block lengths and the rate, fixed and
// bounded block length), and instances with every port connected: audio to the caller's float
// buffers, control inputs at their defaults unless set by symbol, control outputs, CV ports and
// atom ports to buffers of their own (atom inputs an empty sequence before every run). Each
// instance also gets a worker: work it schedules runs at the end of the same run call, as in an
// offline render, so that buffers a plug-in allocates through its worker are there after the first
// block rather than whenever another thread gets to them. Single thread; the world must outlive its
// instances.

#include <lilv/lilv.h>
#include <lv2/options/options.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace lv2time
{
class Lv2World
{
  public:
    Lv2World(double rate, int block);
    ~Lv2World();
    Lv2World(const Lv2World&) = delete;
    Lv2World& operator=(const Lv2World&) = delete;

    LilvWorld* World() const { return mWorld; }
    // The shared features, without the terminating null.
    const std::vector<const LV2_Feature*>& Features() const { return mFeatures; }
    LV2_URID Map(const char* uri);
    double Rate() const { return mRate; }
    int Block() const { return mBlock; }

  private:
    static LV2_URID MapThunk(LV2_URID_Map_Handle handle, const char* uri);
    static const char* UnmapThunk(LV2_URID_Unmap_Handle handle, LV2_URID urid);

    LilvWorld* mWorld = nullptr;
    double mRate;
    int mBlock;
    float mRateValue;
    std::int32_t mBlockValue;
    std::unordered_map<std::string, LV2_URID> mIds;
    std::vector<std::string> mUris; // URID n is mUris[n - 1]
    LV2_URID_Map mMap{};
    LV2_URID_Unmap mUnmap{};
    std::vector<LV2_Options_Option> mOptions;
    std::vector<LV2_Feature> mFeatureStore;
    std::vector<const LV2_Feature*> mFeatures;
};

class Lv2Instance
{
  public:
    // Control inputs named in controls get those values; null with error set on failure.
    static std::unique_ptr<Lv2Instance> Create(Lv2World& world, const std::string& uri,
                                               const std::map<std::string, float>& controls,
                                               std::string& error);
    ~Lv2Instance();
    Lv2Instance(const Lv2Instance&) = delete;
    Lv2Instance& operator=(const Lv2Instance&) = delete;

    // One block of the world's length: stereo in, stereo out (a mono output feeds both sides).
    void Run(const float* inL, const float* inR, float* outL, float* outR);
    const std::string& Name() const { return mName; }

  private:
    Lv2Instance() = default;
    static LV2_Worker_Status Schedule(LV2_Worker_Schedule_Handle handle, std::uint32_t size,
                                      const void* data);
    static LV2_Worker_Status Respond(LV2_Worker_Respond_Handle handle, std::uint32_t size, const void* data);
    void ServiceWorker();

    struct AtomPort
    {
        std::vector<std::uint64_t> buffer; // 64-bit words keep the atom header aligned
        bool input = false;
    };

    LilvInstance* mInstance = nullptr;
    std::string mName;
    std::vector<std::uint32_t> mAudioIn, mAudioOut;
    std::vector<float> mControls; // one value per port index, the control ports' storage
    std::vector<std::vector<float>> mCv;
    std::vector<AtomPort> mAtoms;
    std::vector<float> mScratchIn; // silence for audio inputs beyond two
    std::vector<float> mScratchOut;
    LV2_URID mSequence = 0;
    LV2_URID mChunk = 0;

    LV2_Worker_Schedule mSchedule{this, &Lv2Instance::Schedule};
    LV2_Feature mScheduleFeature{LV2_WORKER__schedule, &mSchedule};
    std::vector<const LV2_Feature*> mFeatures; // the world's, the worker, a null
    const LV2_Worker_Interface* mWorker = nullptr;
    std::vector<std::vector<std::uint8_t>> mJobs, mResponses;
};
} // namespace lv2time
