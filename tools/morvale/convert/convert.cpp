/// `morvale convert`: one image kernel over one file.
#include <cstdio>

#include "common/command.h"
#include "convert/convert_options.h"
#include "convert/kernel_run.h"
#include "convert/kernel_table.h"
#include "pictures/opencv_module.h"

namespace tool {
namespace {

/// OUT with the result's size in place of {size}.
std::string target_name(std::string name, FrameSize size) {
  constexpr std::string_view kPlace = "{size}";
  for (size_t at = name.find(kPlace); at != std::string::npos; at = name.find(kPlace))
    name.replace(at, kPlace.size(), text_of(size));
  return name;
}

void print_list(bool json) { std::fputs((json ? kernel_table_json() : kernel_table_text()).c_str(), stdout); }

}  // namespace

int convert_main(int argc, char** argv) {
  const std::optional<ConvertOptions> options = parse_convert_options(argc, argv);
  if (!options) return kExitDone;
  if (options->list) return print_list(options->json), kExitDone;
  const Kernel& kernel = *options->kernel;
  opencv().check_target(options->out, kernel.gives);
  const Picture in = opencv().read_picture(options->in, options->size, kernel.takes);
  const Picture out = run_kernel(kernel, in, options->flags);
  const std::string name = target_name(options->out, out.size);
  opencv().write_picture(name, out);
  complain(name + ": " + name_of(out.layout) + " of " + text_of(out.size) + ".");
  return kExitDone;
}

}  // namespace tool
