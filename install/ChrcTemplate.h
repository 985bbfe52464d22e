// The interpreter's start-up file, with [KELDPATH] where the installation folder goes.
//
// A literal a line: some lines end in spaces, which editors would take away from a file of plain
// text.
#pragma once

constexpr char kChrcTemplate[] =
    "// Note: This file will be called each time when ch is invoked \n"
    "//############################################################\n"
    "//  DO NOT MODIFY THIS PART OF CODE\n"
    "string_t chhome_;\n"
    "chhome_ = getenv(\"CHHOME\");\n"
    " // set system aliases \n"
    "if(_prompt != NULL) { // interactive mode \n"
    "  __declspec(global) char *g_dirstack;   \n"
    "  putenv(stradd(\"VIM=\", getenv(\"CHHOME\"), \"/config/vim\"));\n"
    "}\n"
    "alias(\"dirs\", \". dirs\"); \n"
    "alias(\"pushd\", \". pushd\"); \n"
    "alias(\"popd\", \". popd\");\n"
    "alias(\"alias\", \". alias_.ch\");\n"
    "alias(\"unalias\", \". unalias_.ch\");\n"
    "alias(\"which\", \". which.ch\");\n"
    "alias(\"FILE\", \"_FILE\"); \n"
    "//  DO NOT MODIFY THE CODE ABOVE\n"
    "\n"
    "putenv(\"PAGER=less -c\");\n"
    " // add current path \n"
    "_path = stradd(_path, \".;\");\n"
    "\n"
    "\n"
    "_fpath = stradd(_fpath, \".;\");\n"
    "\n"
    "_fpath = stradd(_fpath, \"[KELDPATH]\\\\embedch\\\\lib\\\\libc;\");\n"
    "_fpath = stradd(_fpath, \"[KELDPATH]\\\\embedch\\\\lib\\\\libch;\");\n"
    "_fpath = stradd(_fpath, \"[KELDPATH]\\\\embedch\\\\lib\\\\libopt;\");\n"
    "\n"
    "\n"
    "_ipath = stradd(_ipath, \".;\");\n"
    "\n"
    "_ipath = stradd(_ipath, \"[KELDPATH]\\\\embedch\\\\include;\");\n"
    "\n"
    "\n"
    "\n"
    "_lpath = stradd(_lpath, \".;\");\n"
    "\n"
    "_lpath = stradd(_lpath, \"[KELDPATH]\\\\embedch\\\\dl;\");\n"
    "\n"
    "\n"
    "\n"
    "if(getenv(\"TMP\") == NULL)\n"
    "  putenv(stradd(\"TMP=\", getenv(\"TEMP\")));\n"
    "\n"
    "/* uncomment the line below for multi-byte language\n"
    "_setlocale = 1;\n"
    "*/\n"
    "\n"
    "#if strlen(_home)==3 &&  *(*((char **)&_home)+1)==':'  \n"
    "#if !access(stradd(_home, \"_chrc\"), 4)\n"
    "#pragma import stradd(_home, \"_chrc\");\n"
    "#endif\n"
    "#else\n"
    "#if !access(stradd(_home, \"/_chrc\"), 4)\n"
    "#pragma import stradd(_home, \"/_chrc\");\n"
    "#endif\n"
    "#endif\n";

constexpr char kChrcFolderMarker[] = "[KELDPATH]";

constexpr int kChrcTemplateLength = 1471; // bytes
static_assert(sizeof(kChrcTemplate) == kChrcTemplateLength + 1,
              "a space at the end of a line has gone, or something has come");
