// help
#include "tarntool/Commands.h"
#include "tarntool/Failure.h"
#include "tarntool/Output.h"
#include "tarntool/Request.h"

namespace
{
constexpr char kHelp[] =
    "tarntool " TARN_VERSION " - the functions of tarn.dll for installers that cannot load it\r\n"
    "\r\n"
    "  check ADDRESS            checks an e-mail address: result, position, message, address\r\n"
    "  copy FOLDER FILE...      copies files into a folder\r\n"
    "  runonce NAME COMMAND     queues a command for the user's next log-on\r\n"
    "  runonce NAME -- COMMAND  the same, with the rest of the line as the command\r\n"
    "  config FOLDER            writes FOLDER\\embedch\\config\\chrc\r\n"
    "           --quiet         without a box when that fails\r\n"
    "  open                     lets the user pick a file and writes its path\r\n"
    "           --parent HWND --title TEXT --folder FOLDER --filter \"TEXT|*.EXT||\"\r\n"
    "           --extension EXT --file FILE\r\n"
    "  wait --id ID             shows the wait window and returns; it stays for a minute at "
    "most\r\n"
    "           --parent HWND --title TEXT --message TEXT\r\n"
    "  done --id ID             ends that window\r\n"
    "  run -- PROGRAM ARGS...   runs a program behind the wait window\r\n"
    "           --parent HWND --title TEXT --message TEXT --patience SECONDS\r\n"
    "  version, help\r\n"
    "\r\n"
    "  --out FILE               with any command: writes to a file instead of the standard "
    "output\r\n"
    "  --                       what follows is not an option\r\n"
    "\r\n"
    "Exit codes: 0 done; 1 the address is refused; 100 wrong arguments; 101 it could not be "
    "done;\r\n"
    "102 the user cancelled; 103 the program took too long; 104 the program cannot be started;\r\n"
    "105 there is no wait window of this ID; 106 there is one already; 107 a failure of the "
    "system.\r\n"
    "\"run\" gives back the program's own.";
} // namespace

UINT ShowHelp(const Request& request)
{
    Output(request.Value(Request::Out)).WriteLine(kHelp);
    return static_cast<UINT>(ExitCode::Done);
}
