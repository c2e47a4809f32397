#include "render/trace.h"

#include "playback/playback.h"

namespace render {

ExitCode TraceSink::Begin(double) {
    lines_.Begin();
    return Result(out_.Open(name_));
}

ExitCode TraceSink::OnFrame(const Moment& moment) {
    const std::string& text = lines_.Take(moment.ended ? g_dwSeekTime : moment.now, !moment.ended);
    return Result(out_.Write(text.data(), text.size()));
}

}  // namespace render
