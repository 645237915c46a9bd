#include "platform/preview/preview_machine.h"

namespace quellix {

PreviewMachine::PreviewMachine(const Machine& inner)
    : files_(inner.files, inner.shell),
      registry_(inner.registry),
      shell_(inner.shell, files_),
      url_cache_(inner.url_cache, files_),
      profile_(files_, inner.system),
      session_(inner.session),
      cleaners_(inner.cleaners),
      machine_{files_,       registry_, shell_,    url_cache_,           profile_,
               inner.system, session_,  cleaners_, inner.program_folder, inner.installed_folder} {}

}  // namespace quellix
