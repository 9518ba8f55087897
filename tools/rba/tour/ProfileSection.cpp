#include "tools/rba/Profile.h"
#include "tools/rba/tour/Timing.h"
#include "tools/rba/tour/Tour.h"

namespace rb::cli::tour {
namespace {

void writeRow(Html& page, const ProfileRow& row) {
    page << "<tr><th scope=\"row\"><code>"_html << row.group << "</code></th><td><code>"_html
         << row.timer << "</code></td><td class=\"number\">"_html << row.hitCount
         << "</td><td class=\"number\">"_html << millisecondsText(row.accumulatedMs)
         << "</td><td class=\"number\">"_html << numberText(row.meanMs(), 3)
         << " ms</td></tr>\n"_html;
}

}  // namespace

void writeProfileSection(const TourInput&, Html& page) {
    page << R"(<p class="lead">The calls of the library that made this page are sections of
<code>KVRRbaProfiler</code>: the group is the class, the timer the operation. The same table of any
command is printed by <code>rba --profile</code>.</p>
<div class="scroll"><table><thead><tr><th scope="col">Group</th><th scope="col">Timer</th>
<th scope="col" class="number">Hits</th><th scope="col" class="number">In all</th>
<th scope="col" class="number">Each</th></tr></thead><tbody>
)"_html;
    for (const ProfileRow& row : profile()) writeRow(page, row);
    page << R"(</tbody></table></div>
<p class="dim">Where a section above tells a time, it called several times and tells the fastest; here
all calls count. Not in the table: what other processes did for this page, and calls on single numbers
that take less than reading a clock.</p>
)"_html;
}

}  // namespace rb::cli::tour
