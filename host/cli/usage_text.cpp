// The text of --help.

#include "host/cli/usage_text.h"

#include "host/graph/setting_lookup.h"

namespace tavo {

std::wstring UsageText() {
    return LR"(Usage: vantrel INPUT OUTPUT.avi [options]
       vantrel INPUT... FOLDER\ [options]
       vantrel --play|--pages INPUT [options]
       vantrel --cpu|--list

Scales the video in INPUT with the filter Mira Vantrel and writes it, uncompressed, to OUTPUT.avi,
with its sound, or plays it in a window.

Picture
  --size WxH        size of the output; 0 keeps that side of the source (default 0x0)
  --fit WxH         the largest size in this box that keeps the shape, 0 for a side without a limit;
                    none gets larger
  --method NAME     how to scale (default AUTO)
  --format NAME     the only pixel format that the filter may take (default AUTO: any)
  --type NAME       the only kind of format block that it may take (default AUTO: any)
Time
  --fps N           fixed frame rate, by repeats and drops; 29.97 or 30000/1001
  --start TIME      take the frames from TIME on, in seconds or as H:MM:SS.fff
  --duration TIME   take the frames of so long a time
  --as-is           write frame for frame, whatever the times of the frames
Sound
  --no-sound        leave the sound out
Files
  --output-folder DIR  for several inputs, also with * and ?: clip.mp4 becomes DIR\clip.avi; the same
                    is meant by a last name that ends with a slash
  --overwrite       replace files that are there
  --dry-run         tell what would be done, and write nothing
  --log FILE.csv    a line per frame: times, taken or repeated or dropped, milliseconds
  --json            statistics, or what went wrong, as a line of JSON
In a window
  --play            play the video; the space bar pauses, Esc ends
  --pages           play it over and over beside the filter's property pages
Other
  --registered      use the filter that is registered on this system
  --module PATH     use the filter in this file (default: TavoResample.ax beside this program)
  --graph           print the filters, pins and media types that were connected
  --publish         let graph editors see the graph while it runs
  --quiet           no progress and no statistics
  --cpu             what is known of the processor, and which code runs on it
  --list            formats, methods and types by number and name, and the decoders found
  --help, -h, /?    this text
  --version         version of this program

Formats hold sizes of their own: planar pictures are even in width and height (YVU9: multiples of
4), packed 4:2:2 ones even in width. Sizes between are rounded up.

Without --fps and --as-is, frames that come at irregular times keep them: the file has the rate that
suits their distances, and shows frames for as long as they last.

Methods: )" +
           ListSettings(MethodNames()) +
           L"\n         or, for short, \"nearest\" and \"bilinear\", also with -auto, -mmx, -sse"
           L"\nFormats: " +
           ListSettings(FormatNames()) + L"; \"I420\" is IYUV\nTypes:   " +
           ListSettings(TypeNames()) +
           LR"(

The file has one sound of INPUT too: uncompressed sound as it is, other sound decoded. It keeps its
times, also with --fps. With --as-is it is in step only where the frames come at steady times.

Ctrl-C stops early; what was written until then is a complete file. In a window there is no sound.
Exit codes: 0 done, 1 failed, 2 wrong command line, 3 stopped by Ctrl-C.
)";
}

}  // namespace tavo
