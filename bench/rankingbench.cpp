// How long ranking takes per keystroke: 1k, 10k and 100k realistic menu items
// (titles and paths made from a fixed word list and seed), queries of 1 to 8
// characters. `--dump-items FILE N` writes the same items' path keys, one per
// line, and `--queries` prints the queries, for comparison with other tools.
#include "search/menuranker.h"

#include <QCoreApplication>
#include <QFile>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>

namespace {

const char* const kQuery = "findnext";

QList<MenuItem> makeItems(int count)
{
    static const QStringList menus{"File", "Edit", "View", "Insert", "Format", "Tools", "Table", "Window", "Help",
                                   "Image", "Layer", "Select", "Filters", "Go", "Bookmarks", "History"};
    static const QStringList words{
        "New", "Open", "Save", "As", "Close", "Print", "Preview", "Export", "Import", "Recent", "Document", "Page",
        "Setup", "Undo", "Redo", "Cut", "Copy", "Paste", "Special", "Delete", "Select", "All", "Find", "Next",
        "Previous", "Replace", "Go", "To", "Line", "Zoom", "In", "Out", "Actual", "Size", "Full", "Screen", "Toolbar",
        "Sidebar", "Status", "Bar", "Ruler", "Grid", "Guides", "Show", "Hide", "Insert", "Table", "Row", "Column",
        "Cell", "Merge", "Split", "Image", "Chart", "Shape", "Text", "Box", "Frame", "Field", "Date", "Time",
        "Number", "Footnote", "Comment", "Bold", "Italic", "Underline", "Strikethrough", "Font", "Paragraph",
        "Style", "Bullets", "Numbering", "Align", "Left", "Right", "Center", "Justify", "Indent", "Spacing",
        "Spelling", "Grammar", "Language", "Word", "Count", "Macros", "Options", "Preferences", "Extensions",
        "Window", "Minimize", "Arrange", "Help", "About", "Manual", "Report", "Bug", "Layer", "Mask", "Channel",
        "Path", "Filter", "Blur", "Sharpen", "Noise", "Distort", "Render", "Colors", "Levels", "Curves", "Hue",
        "Saturation", "Brightness", "Contrast", "Invert", "Flip", "Rotate", "Crop", "Canvas", "Scale", "Merge",
        "Visible", "Flatten", "Duplicate", "Anchor", "Group", "Ungroup", "Lock", "Unlock", "Bring", "Forward",
        "Send", "Backward", "Front", "Back", "History", "Bookmark", "Tab", "Reload", "Stop", "Home", "Search",
        "Encoding", "Unicode", "Western", "Settings", "Session", "Restore", "Share", "Mail", "Link", "Archive"};
    std::mt19937 random(42);
    auto pick = [&](const QStringList& list) { return list[int(random() % quint32(list.size()))]; };
    QList<MenuItem> items;
    items.reserve(count);
    for (int i = 0; i < count; ++i) {
        QStringList path{pick(menus)};
        for (int depth = int(random() % 3); depth > 0; --depth)
            path << pick(words) + u' ' + pick(words);
        QStringList title;
        for (int n = 1 + int(random() % 4); n > 0; --n)
            title << pick(words);
        path << title.join(u' ') + (random() % 5 == 0 ? QStringLiteral("…") : QString());
        items.append(MenuItem{QUuid::createUuid(), path.last(), path, std::nullopt, true, "Bench", "org.bench", nullptr});
    }
    return items;
}

struct Fixture {
    MenuRanker ranker;

    explicit Fixture(int count)
    {
        ranker.setItems(makeItems(count));
        // A few used items, as a real history has.
        QHash<QString, qint64> uses;
        for (int i = 0; i < count; i += 97)
            uses[ranker.items()[i].pathKey()] = 1;
        ranker.setUsageCounts(uses);
    }
};

void rank(benchmark::State& state)
{
    const int count = int(state.range(0));
    const int queryLength = int(state.range(1));
    static std::map<int, std::unique_ptr<Fixture>> fixtures;
    auto& fixture = fixtures[count];
    if (!fixture)
        fixture = std::make_unique<Fixture>(count);
    const QString query = QString::fromLatin1(kQuery).left(queryLength);
    size_t results = 0;
    for (auto _ : state) {
        auto ranked = fixture->ranker.rank(query);
        results = ranked.size();
        benchmark::DoNotOptimize(ranked.data());
    }
    state.counters["results"] = double(results);
    state.counters["ns/item"] = benchmark::Counter(double(count), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(rank)->ArgsProduct({{1000, 10000, 100000}, {1, 2, 3, 4, 5, 6, 7, 8}})->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.value(1) == QLatin1String("--dump-items")) {
        QFile out(args.value(2));
        if (!out.open(QIODevice::WriteOnly))
            return 1;
        for (const MenuItem& item : makeItems(args.value(3).toInt()))
            out.write(item.pathKey().toUtf8() + '\n');
        return 0;
    }
    if (args.value(1) == QLatin1String("--queries")) {
        for (int n = 1; n <= 8; ++n)
            std::printf("%s\n", QString::fromLatin1(kQuery).left(n).toLatin1().constData());
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
