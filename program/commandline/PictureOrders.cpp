#include "program/commandline/PictureOrders.h"

namespace commandline {

void AddPictureOrder(Verb verb, PictureOrder& order, std::string& pattern) {
  order.folder = AbsolutePath(".");
  AddOnly(verb, order.states, "--state");
  verb.Add("-o,--output", pattern,
           "File names, ending in .png, .tif or .exr, with {scene}, {state}, {camera}, {size}, "
           "{frame}, {date} and {index}; {index:03} has three digits, {state:safe} plain letters "
           "only")
      .Word("FILES")
      .Default("{scene} {state}.png");
  verb.Add("--format", order.format,
           "png, tif: as a screen shows it; exr: OpenEXR with all the light, linear half floats")
      .OneOf({"png", "tif", "exr"})
      .Word("FORMAT");
  verb.Add("--size", order.sizes,
           "Picture sizes, as 1920x1080, instead of that of each state's render settings")
      .Word("WIDTHxHEIGHT...");
  verb.Add("--frames", order.frames,
           "Frames from and to, as 0:90, instead of the first one of each state's render settings")
      .Word("FROM:TO");
}

// Before the first pixel. With --strict a scene with findings is left alone, since a night of wrong
// pictures costs more than none.
int CheckPictures(Session& session, PicturePlan& plan, Report& report) {
  const Program& program = session.GetProgram();
  if (const int status = session.CheckTextures(report); status != kDone) return status;
  const rendering::PictureFindings found = plan.Findings();
  report.Put("findings", found.errors + found.warnings);
  if (found.text.empty()) return kDone;
  if (!program.strict) {
    program.terminal.Note(found.text);
    return kDone;
  }
  program.terminal.Error(found.text + " Nothing was rendered (--strict).");
  return kFailed;
}

}  // namespace commandline
