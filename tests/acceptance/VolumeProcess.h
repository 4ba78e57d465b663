#pragma once

#include "Programs.h"

#include <fstream>

namespace Corvane::Test
{

/// Tests beside a volume-service of their own with the uid "volume", in a runtime folder of their own.
class WithVolumeService : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(await([] { return corvanectl({"state", "volume"}).output == "RUNNING\n"; })) << service.getError();
    }

    /// @return the path of a file that holds this text
    std::string write(const std::string& text)
    {
        const std::string path = folder.getPath() + "/attributes.json";
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    /// Whether the service lets the holder of this token change the volume; asked by trying.
    static bool permits(const std::string& token)
    {
        return corvanectl({"call", "VOLUMEvolume", "IVolume::setVolume", "token=" + token, "level=1"}).status == 0;
    }

    TemporaryDirectory folder;
    TemporaryRuntime runtime;
    ChildProcess service{{VOLUME_SERVICE, "--authorization-token=volume"}, leavingSignalsToTheProgram()};
};

} // namespace Corvane::Test
