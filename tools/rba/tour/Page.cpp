#include "tools/rba/Context.h"
#include "tools/rba/Interrupt.h"
#include "tools/rba/tour/Tour.h"

#include <array>
#include <ctime>
#include <utility>

namespace rb::cli::tour {
namespace {

std::string today() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 16> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d", &parts);
    return {text.data(), length};
}

void writeContents(Html& page) {
    page << R"(<nav aria-label="Contents"><ol>)"_html;
    for (const Section& section : sections())
        page << "<li><a href=\"#"_html << section.id << "\">"_html << section.title
             << "</a></li>"_html;
    page << "</ol></nav>\n"_html;
}

/// The content of a section, or why there is none: one that fails must not take the page with it.
Html contentOf(const Section& section, const TourInput& input, std::vector<std::string>& failures) {
    try {
        Html content;
        section.write(input, content);
        return content;
    } catch (const Interrupted&) {
        throw;
    } catch (const std::exception& error) {
        failures.push_back(std::string(section.title) + ": " + error.what());
        Html content;
        content << R"(<p class="trouble">This section could not be made: )"_html << error.what()
                << "</p>\n"_html;
        return content;
    }
}

void writeSections(const TourInput& input, Html& page, std::vector<std::string>& failures) {
    int number = 0;
    for (const Section& section : sections()) {
        InterruptGuard::check();
        page << "<section id=\""_html << section.id << "\"><h2><span class=\"count\">"_html
             << ++number << "</span> "_html << section.title << "</h2>\n"_html
             << contentOf(section, input, failures) << "</section>\n"_html;
    }
}

}  // namespace

Page buildPage(const TourInput& input) {
    std::vector<std::string> failures;
    Html page;
    page << R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>RenderingBase: the tour</title>
<style>)"_html
         << Markup{kStyleSheet} << R"(</style>
</head>
<body>
<header><div class="inner">
<p class="eyebrow">RenderingBase )"_html
         << RB_VERSION << R"(</p>
<h1>The tour</h1>
<p class="tagline">What goes in, which service takes it, what comes out. Everything on this page was
computed by the library a moment ago, from the samples that come with it.</p>
)"_html;
    writeContents(page);
    page << "</div></header>\n<main>\n"_html;
    writeSections(input, page, failures);
    page << "</main>\n<footer><div class=\"inner\">Made by <code>rba tour</code>, version "_html
         << RB_VERSION << ", on <time>"_html << today()
         << "</time>.</div></footer>\n</body>\n</html>\n"_html;
    return {page.text(), std::move(failures)};
}

}  // namespace rb::cli::tour
