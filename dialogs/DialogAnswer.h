#pragma once

// A dialog's answer inside the program. The message-box codes (6 yes, 7 no, 2 cancel, 1 OK,
// 0 none) are what the dialog procedures return to their callers, so they appear only here.
enum class DialogAnswer { Yes, No, Cancel, Ok, None };

[[nodiscard]] constexpr int toMessageBoxCode(DialogAnswer answer)
{
    switch (answer) {
    case DialogAnswer::Yes:
        return 6;
    case DialogAnswer::No:
        return 7;
    case DialogAnswer::Cancel:
        return 2;
    case DialogAnswer::Ok:
        return 1;
    case DialogAnswer::None:
        break;
    }
    return 0;
}

// Any code that is not one of the five reads as None.
[[nodiscard]] constexpr DialogAnswer fromMessageBoxCode(int code)
{
    switch (code) {
    case 6:
        return DialogAnswer::Yes;
    case 7:
        return DialogAnswer::No;
    case 2:
        return DialogAnswer::Cancel;
    case 1:
        return DialogAnswer::Ok;
    default:
        return DialogAnswer::None;
    }
}
