#pragma once

#include "devkit/prntvpt/device/device.h"

namespace devkit::prntvpt {

enum class BinScope { Job, Document, Page };
enum class FeedStatement { ScoredProperty, Property, Absent };
enum class ImageableArea { Oriented, Portrait, Absent };

// How the device differs from its model.
struct Variants {
    BinScope bins = BinScope::Job;
    bool noScaling = false;
    bool noCopies = false;
    FeedStatement feed = FeedStatement::ScoredProperty;
    ImageableArea imageable = ImageableArea::Oriented;
    bool letterDefault = false;
    unsigned snapshotBytes = 0;
    bool privateSizeNames = false;
};

// Changes the model as the switches want it, capabilities, default ticket and constraints alike, and indexes
// it anew. DeviceError when the model lacks what a variant needs.
void ApplyVariants(const Variants& variants, Device& device);

}  // namespace devkit::prntvpt
