// examRoad: the road of an examination, from the worklist to the images that leave the house.
//
// examRoad.cpp   the whole road, acquisition, rejection, thumbnails     viewing.cpp    adjusting what is seen, undo
// reopening.cpp  an examination closed and rebuilt from its files       marking.cpp    marks, export, film
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "tools/demo/contactSheet.h"
#include "tools/demo/examHost.h"
#include "tools/demo/sample.h"

namespace qvr {

/// Acquires the samples in one examination of at least seven images and takes them through everything that a console
/// does with them. Saves pictures in `folder` and tells each result in one line. Throws DemoFailure when a step fails
/// or does not do what is claimed.
void takeTheRoad(std::vector<Sample> samples, const std::filesystem::path& folder);

/// Changes an activated image's window, curve, zoom and pan, and steps back to where it was.
void viewAndAdjust(ExamHost& host, int position);
/// Keeps an undo copy, turns the image, and takes the copy back.
void turnAndUndo(ExamHost& host, int position);
/// Writes everything out, destroys the exam, opens its images in a new one and compares their pictures.
void closeAndReopen(std::unique_ptr<ExamHost> host, const std::vector<Sample>& samples, ContactSheet& sheet);
/// Acquires one image, adds and edits marks, exports it with its marks burned in, and makes a film of it.
void markExportAndPrint(ExamHost& host, ContactSheet& sheet);

}  // namespace qvr
