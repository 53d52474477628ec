#pragma once

// What frmAreYouSure answers: 6 (yes) or 2 (cancel), and whether the user asked not to be
// asked again. The caller decides where that wish is kept.
struct AreYouSureAnswer
{
    int result = 2;
    bool suppressWarnings = false;
};
