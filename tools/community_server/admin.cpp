// The host's tool for a community library. See README.md.

#include "tools/community_server/Administration.h"

#include "tools/community_server/Options.h"

#include <iostream>

int main(int argc, char* argv[])
{
    return community_server::administer({argv + 1, argv + argc}, community_server::environmentOfProcess(), std::cout,
                                        std::cerr);
}
