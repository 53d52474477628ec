// Times saving and loading category trees of growing size, and placing subscriptions the way
// the main window's list load does. Usage: bench_category_tree [repeats [categories]]
#include "categoriesUtils.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTextStream>

#include <algorithm>
#include <vector>

using namespace categoriesUtils;

namespace {
// Folders four levels deep at most, as users keep them; every size has the same shape.
void fillTree(CategoryTree &tree, int categories)
{
    QRandomGenerator random(7);
    std::vector<CategoryNode *> parents;
    for (int i = 0; i < categories; ++i) {
        CategoryNode *parent = parents.empty() || random.bounded(10) == 0
                                   ? nullptr
                                   : parents[random.bounded(quint32(parents.size()))];
        CategoryNode *node = tree.addNode(parent, MakeNodeKey(0), QStringLiteral("Catégorie %1 news").arg(i));
        InitCategoryNode(*node);
        if (node->level() < 3)
            parents.push_back(node);
    }
}

// The best run: the machine is shared, and slower runs only measure the neighbours.
double bestMs(const std::vector<double> &samples)
{
    return *std::min_element(samples.begin(), samples.end());
}

void benchSaveLoad(QTextStream &out, int categories, int repeats)
{
    CategoryTree tree;
    fillTree(tree, categories);
    std::vector<double> saves, loads;
    QString text;
    for (int r = 0; r < repeats; ++r) {
        QElapsedTimer timer;
        timer.start();
        text = SerializeCategoryTree(tree);
        saves.push_back(timer.nsecsElapsed() / 1e6);
        CategoryTree loaded;
        timer.restart();
        if (!LoadCategoryTree(loaded, text) || loaded.count() != categories)
            out << "load FAILED\n";
        loads.push_back(timer.nsecsElapsed() / 1e6);
    }
    const double save = bestMs(saves);
    const double load = bestMs(loads);
    out << QStringLiteral("%1 categories, %2 KiB: save %3 ms (%4 us each), load %5 ms (%6 us each)\n")
               .arg(categories, 6)
               .arg(text.size() * 2 / 1024, 6)
               .arg(save, 7, 'f', 2)
               .arg(save * 1000 / categories, 5, 'f', 2)
               .arg(load, 7, 'f', 2)
               .arg(load * 1000 / categories, 5, 'f', 2);
}

void benchPlacement(QTextStream &out, int subscriptions, int categories)
{
    CategoryTree tree;
    QStringList paths;
    for (int i = 0; i < categories; ++i)
        paths << (i % 3 == 0 ? QStringLiteral("Top %1").arg(i / 3)
                             : QStringLiteral("Top %1~~~Mid %2~~~Leaf %3").arg(i / 30).arg(i / 3).arg(i));
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < subscriptions; ++i) {
        const QString &path = paths[i % categories];
        CategoryNode *parent = FindNodeByPath(tree, path);
        if (!parent)
            parent = AddCategoryFromSubscription(tree, path);
        tree.addNode(parent, MakeNodeKey(1), QStringLiteral("Feed %1").arg(i), QStringLiteral("checked"))
            ->setTag(QString::number(i + 1));
    }
    out << QStringLiteral("place %1 subscriptions in %2 category paths: %3 ms (%4 nodes)\n")
               .arg(subscriptions)
               .arg(categories)
               .arg(timer.nsecsElapsed() / 1e6, 0, 'f', 2)
               .arg(tree.count());
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int repeats = argc > 1 ? std::max(1, QString::fromLocal8Bit(argv[1]).toInt()) : 5;
    QTextStream out(stdout);
    // A second argument picks one size alone, for counting instructions with perf stat.
    const int only = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 0;
    for (int categories : {1000, 5000, 20000}) {
        if (only == 0 || only == categories)
            benchSaveLoad(out, categories, repeats);
    }
    if (only == 0)
        benchPlacement(out, 10000, 300);
    return 0;
}
