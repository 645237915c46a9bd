#pragma once

#include <string>
#include <vector>

#include "platform/surveyed_volume.h"

namespace quellix {

// Looks for a Windows in a mounted folder, and for what stands in the way of cleaning it; of an
// image file or a device it tells how to mount it. Changes nothing. Throws Error for a place that
// is not there.
SurveyedVolume SurveyVolume(const std::string& place);

// The folders in which disks are mounted that may hold one.
std::vector<std::string> MountedPlaces();

}  // namespace quellix
