// A plug-in instance on a small tree of its own, with a host that writes down what it is told.
#pragma once

#include "CApplication.h"
#include "CAudioExtParamList.h"
#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioWrapper.h"
#include "CNoiseSource.h"
#include "CreatorTable.h"
#include "GraphRig.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "TemporaryHome.h"

#include <string>
#include <vector>

namespace qel::test {

// A shared tree with everything an instance needs: gains and a mix with smooth updates, mutes, nodes and
// links under a bypass state.
inline std::string wrapperTree()
{
    return R"(<tree>
  <core:object name="project" plugin-intchannel-count="8" plugin-group-count="8" plugin-code="7qtz" use-host-bpm="true"
    app-name="Test" app-vendor="Maker" app-version="1.2"/>
  <template name="plugin" content-tag="core:object" sidechain="false">
    <audio:dcdaw-context name="dcdaw-context"/>
    <audio:audio-env name="audio-env" viz-fps="30.0"/>
    <audio:param-collector name="param-collector" env="^audio-env"/>
    <audio:viz-collector name="viz-collector" env="^audio-env" param-collector="^param-collector"/>
    <audio:cctable name="cctable"/>
    <audio:interface-base-connector-vst name="interface-base-connector"/>
    <audio:interface-base name="interface-base" base-connector="^interface-base-connector" undo-count-max="32"
      param-collector="^param-collector" viz-collector="^viz-collector"/>
    <audio:param-registry name="param-registry" hierarchy="plugin.modMain" is-master="true" id="7qtz"
      preset-naming="Master preset" param-undo="^interface-base" param-collector="^param-collector"/>
    <audio:ext-param-list name="ext-param-list">
      <audio:ext-param name="p0" ext-name="Gain" param-name="plugin.modMain.modGain.gain"
        param-collector="plugin.param-collector" element-index="0" group="0"/>
    </audio:ext-param-list>
  </template>
  <core:object name="audio">
    <core:object name="paramcvt">
      <audio:cvt-gain name="gain" label="dB"/><audio:cvt-real name="real"/><audio:cvt-text name="text"/>
      <audio:cvt-enum name="enum" state-names="Off;On"/>
    </core:object>
    <audio:param name="param-enable-viz" is-global="true" converter="enum" min-values="0" max-values="1" def-values="0"/>
    <audio:process-def name="modMain" is-auto-links="false">
      <audio:param name="host-oversampling-mode" is-global="true" converter="enum" min-values="0" max-values="3" def-values="0"/>
      <audio:param name="host-offline" is-global="true" converter="enum" min-values="0" max-values="1" def-values="0"/>
      <audio:param name="host-bpm" is-global="true" converter="real" min-values="1" max-values="1000" def-values="140"/>
      <audio:param name="denorm-enable" is-global="true" converter="real" min-values="0" max-values="1" def-values="1"/>
      <audio:param name="wet" is-storable="true" converter="enum" min-values="0" max-values="1" def-values="1"/>
      <core:object name="io-params">
        <audio:param name="in-channel-names" data-type="string" is-storable="true" is-single-group="true"
          converter="text" def-values="L,R"/>
      </core:object>
      <audio:process-bypass-state id="0" param="wet" is-inverted="true"/>
      <audio:process-bypass-state id="11" param="denorm-enable" is-inverted="true"/>
      <audio:modDenorm name="modDenorm"/>
      <audio:modNode name="head"/>
      <audio:modGain name="modGain" is-smooth-update="true">
        <audio:param-alloc param-name="gain" index="0"/><audio:param-alloc param-name="mute" index="1"/>
        <audio:param name="gain" is-storable="true" converter="gain" min-values="-24" max-values="24" def-values="0"/>
        <audio:param name="mute" is-storable="true" converter="enum" min-values="0" max-values="1" def-values="0"/>
      </audio:modGain>
      <audio:modAbs name="abs"/>
      <audio:modMix name="mix" is-smooth-update="true">
        <audio:param-alloc param-name="mix" index="0"/>
        <audio:param name="mix" is-storable="true" converter="real" min-values="0" max-values="1" def-values="0.25"/>
      </audio:modMix>
      <audio:modMono name="mono"/>
      <audio:modNode name="tail"/>
      <audio:process-link src="*" dst="modDenorm" bypass-state-id="11"/>
      <audio:process-link src="modDenorm" dst="head" bypass-state-id="11"/>
      <audio:process-link src="head" dst="modGain"/>
      <audio:process-link src="head" dst="abs"/>
      <audio:process-link src="modGain" dst="mix"/>
      <audio:process-link src="abs" dst="mix/1"/>
      <audio:process-link src="mix" dst="mono" bypass-state-id="0"/>
      <audio:process-link src="mono" dst="tail" bypass-state-id="0"/>
      <audio:process-link src="modGain" dst="tail"/>
      <audio:process-link src="tail" dst="*"/>
    </audio:process-def>
    <audio:modOutput name="modOutput" use-time-shift="false"/>
  </core:object>
</tree>)";
}

// The application on one tree, with its stores in a folder of their own. One at a time.
class TestApplication
{
public:
    explicit TestApplication(const std::string& xml)
    {
        CMemoryWriteBuffer chunk;
        CError error = chunk.writeCompressedData(CByteBuffer(tools::encodeTree(compileXml(xml))),
                                                 tools::kCompiledTreeId);
        CByteBuffer bytes;
        chunk.copyTo(bytes);
        const auto size = static_cast<std::uint32_t>(bytes.size());
        for (unsigned shift = 0; shift < 32; shift += 8) {
            record_.push_back(static_cast<std::uint8_t>(size >> shift));
        }
        record_.insert(record_.end(), bytes.data(), bytes.data() + bytes.size());
        rows_[0] = {record_.data(), "SharedData.xml"};
        CApplicationParts parts;
        parts.creators = kCreatorTable;
        parts.resources = rows_;
        if (!error) {
            error = CApplication::start(parts);
        }
        if (error) {
            throw std::runtime_error(error.text());
        }
        CNoiseSource::restartSeeds();
    }
    ~TestApplication() { CApplication::finish(); }
    TestApplication(const TestApplication&) = delete;
    TestApplication& operator=(const TestApplication&) = delete;

private:
    TemporaryHome home_;
    std::vector<std::uint8_t> record_;
    CResourceRow rows_[2] = {};
};

// A host layer that remembers.
class TestHost : public CAudioWrapper
{
public:
    void setParameterAutomated(std::int32_t, double) override {}

    // Stereo in and out at 48 kHz.
    void start(int channels = 2)
    {
        CAudioHostSetup setup;
        setup.sampleRateHz = 48000.0;
        setup.inputCount = channels;
        setup.outputCount = channels;
        resume(setup);
    }

    void set(const char* name, double value)
    {
        CAudioParamContext context;
        getParams().getParam(CString("plugin.modMain.") + name).setValue(0, 0, 0, value, context);
    }
    double get(const char* name)
    {
        return getParams().getParam(CString("plugin.modMain.") + name).getValue(0, 0);
    }

    // Runs float or double samples through in blocks of the given sizes.
    template <class Sample>
    std::vector<std::vector<Sample>> run(const std::vector<std::vector<Sample>>& input,
                                         const std::vector<int>& sizes)
    {
        std::vector<std::vector<Sample>> output(input.size(), std::vector<Sample>(input[0].size()));
        std::size_t block = 0;
        for (std::size_t start = 0; start < input[0].size();) {
            const auto size = static_cast<std::size_t>(sizes[block++ % sizes.size()]);
            const std::size_t count = std::min(size, input[0].size() - start);
            std::vector<const void*> in;
            std::vector<void*> out;
            for (std::size_t channel = 0; channel < input.size(); ++channel) {
                in.push_back(input[channel].data() + start);
                out.push_back(output[channel].data() + start);
            }
            CAudioHostBlock host;
            host.inputs = in.data();
            host.outputs = out.data();
            host.count = static_cast<int>(count);
            host.isDouble = sizeof(Sample) == sizeof(double);
            processBlock(host);
            start += count;
        }
        return output;
    }

    int processLevel = 2;
    std::optional<double> tempo;
    int ioChanges = 0;
    std::vector<std::int32_t> delays;
    std::vector<CString> labels;

protected:
    int hostProcessLevel() override { return processLevel; }
    std::optional<double> hostTempo() override { return tempo; }
    void ioChanged() override { ++ioChanges; }
    void setInitialDelay(std::int32_t samples) override { delays.push_back(samples); }
    std::vector<CString> hostChannelLabels() override { return labels; }
};

} // namespace qel::test
