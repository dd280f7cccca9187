#include "qumetra/run/writer_library.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "client/src/common/pw_files.h"
#include "client/src/common/pw_log.h"
#include "qumetra/run/guarded_call.h"
#include "qumetra/run/run_error.h"
#include "writers/writer_plugins.h"

namespace qumetra {
namespace {

constexpr const char* kLibraryFile = "libQMWriterPlugins.so";

using CreateFunction = PluginList* (*)();
using DestroyFunction = void (*)(PluginList*);
using PluginListOwner = std::unique_ptr<PluginList, DestroyFunction>;

/// What `dlopen` and `dlsym` complain about.
std::string loaderError() {
  const char* text = ::dlerror();
  return text != nullptr ? text : "unknown error";
}

/// The library stays open: what it made may be known elsewhere to the end of the process.
void* openLibrary(const std::string& path) {
  void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (handle == nullptr) {
    throw RunError(fmt::format("cannot load the writers: {}", loaderError()));
  }
  return handle;
}

template <typename Function>
Function resolve(void* handle, const std::string& path, const char* name) {
  void* symbol = ::dlsym(handle, name);
  if (symbol == nullptr) {
    throw RunError(fmt::format("{} is no library of writers: it has no function {}", path, name));
  }
  return reinterpret_cast<Function>(symbol);
}

/// Lets the library at `handle` make its writers.
PluginListOwner makePlugins(void* handle, const std::string& path) {
  const auto create = resolve<CreateFunction>(handle, path, "createPlugins");
  const auto destroy = resolve<DestroyFunction>(handle, path, "destroyPlugins");
  PluginList* list = nullptr;
  if (const auto thrown = thrownBy([&] { list = create(); })) {
    throw RunError(fmt::format("{} cannot make its writers: {}", path, *thrown));
  }
  if (list == nullptr) {
    throw RunError(fmt::format("{} cannot make its writers: no memory", path));
  }
  return {list, destroy};
}

/// The plug-ins of a list that there are; an entry may be null.
std::vector<WriterPlugin*> pluginsOf(const PluginList& list) {
  std::vector<WriterPlugin*> plugins;
  if (list.plugins == nullptr) {
    return plugins;
  }
  for (std::int32_t i = 0; i < list.count; ++i) {
    if (list.plugins[i] != nullptr) {
      plugins.push_back(static_cast<WriterPlugin*>(list.plugins[i]));
    }
  }
  return plugins;
}

LoadedWriter describe(WriterPlugin& plugin) {
  // Only what every writer has is read through the derived record: the library makes no other kind.
  const auto& capability =
      *static_cast<const pwr::WriterPluginCapability*>(plugin.m_capabilities.front());
  return {.plugin = &plugin,
          .option = capability.m_name,
          .suffix = capability.m_fileSuffix,
          .description = capability.m_description,
          .guid = plugin.m_guid,
          .flags = capability.m_flags,
          .version = {}};
}

/// Calls one of the operations by which plug-ins are told something; what it throws is logged.
template <typename Call>
void tell(const std::string& writer, const char* operation, Call&& call) {
  if (const auto thrown = thrownBy(std::forward<Call>(call))) {
    pwr::logError("ERROR: Writer %s: %s threw: %s\n", writer.c_str(), operation, thrown->c_str());
  }
}

}  // namespace

bool LoadedWriter::continuous() const {
  return (flags & pwr::PluginCapability::kFlagContinuous) != 0;
}

struct WriterLibrary::State {
  explicit State(const std::string& path) : list(makePlugins(openLibrary(path), path)) {}

  PluginListOwner list;
  std::vector<LoadedWriter> writers;
};

WriterLibrary::WriterLibrary(const std::string& path) : m_state(std::make_unique<State>(path)) {
  std::int64_t place = 0;
  for (WriterPlugin* plugin : pluginsOf(*m_state->list)) {
    plugin->m_id = place++;
    if (plugin->m_capabilities.empty() || plugin->m_capabilities.front() == nullptr) {
      continue;
    }
    LoadedWriter& writer = m_state->writers.emplace_back(describe(*plugin));
    tell(writer.option, "getVersion", [&] { plugin->getVersion(writer.version); });
  }
}

WriterLibrary::~WriterLibrary() = default;

std::string WriterLibrary::defaultPath() {
  namespace fs = std::filesystem;
  std::string toolPath;
  if (!pwr::getToolPath(toolPath)) {
    throw RunError("cannot find the writers: the running program's folder is not known");
  }
  const fs::path here = fs::path(toolPath).parent_path();
  std::error_code error;
  const fs::path candidates[] = {here.parent_path() / "lib" / kLibraryFile,
                                 here.parent_path() / QUMETRA_LIBDIR / kLibraryFile,
                                 here / kLibraryFile};
  std::vector<std::string> tried;
  for (const fs::path& candidate : candidates) {
    if (fs::exists(candidate, error)) {
      return candidate.string();
    }
    if (std::find(tried.begin(), tried.end(), candidate.string()) == tried.end()) {
      tried.push_back(candidate.string());
    }
  }
  throw RunError(fmt::format("cannot find the writers: there is no {}", fmt::join(tried, ", no ")));
}

const std::vector<LoadedWriter>& WriterLibrary::writers() const { return m_state->writers; }

std::string WriterLibrary::knownNames() const {
  std::string names;
  for (const LoadedWriter& writer : writers()) {
    names += (names.empty() ? "" : ", ") + writer.option;
  }
  return names;
}

const LoadedWriter* WriterLibrary::find(const std::string& option) const {
  const auto found =
      std::find_if(writers().begin(), writers().end(),
                   [&](const LoadedWriter& writer) { return writer.option == option; });
  return found != writers().end() ? &*found : nullptr;
}

void WriterLibrary::commandLineRead(const std::vector<std::string>& broadcastOptions) {
  for (const std::string& option : broadcastOptions) {
    for (const LoadedWriter& writer : writers()) {
      tell(writer.option, "handleBroadcastOption",
           [&] { writer.plugin->handleBroadcastOption(option); });
    }
  }
  for (const LoadedWriter& writer : writers()) {
    tell(writer.option, "notifyCommandlineParamsSet_i",
         [&] { writer.plugin->notifyCommandlineParamsSet_i(); });
  }
}

}  // namespace qumetra
