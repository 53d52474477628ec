#pragma once

#include <QString>

class CategoryTree;

// The text form of the category part of the tree, as kept in the saved settings. Values are
// written between parentheses without escaping, so a name with an unmatched parenthesis
// spoils the reading of everything after it; older saved trees depend on this exact form.
class CategoryTreeSerializer
{
public:
    struct ReadResult
    {
        bool ok = true;
        // For the user when the text is not in the expected form; empty for failures that
        // are only logged (a key taken twice, nesting too deep).
        QString message;
    };

    [[nodiscard]] static QString write(const CategoryTree &tree);
    // Clears the tree and rebuilds it from the text; on an error the nodes read so far stay.
    // Text that does not begin with a tree leaves the tree as it was.
    [[nodiscard]] static ReadResult read(CategoryTree &tree, const QString &text);
};
