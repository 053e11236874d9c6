// The files that editors keep next to photographs.
#pragma once

#include <map>
#include <string>
#include <vector>

// Reads each folder once.
class Sidecars {
  public:
    // The sidecars of a photograph, in natural order: IMG_1.xmp and IMG_1.CR2.xmp, with any of the extensions xmp, pp3
    // and dop in upper or lower case. Each one is given once, to the first photograph that it belongs to.
    std::vector<std::string> take(const std::string& photo);

  private:
    using Names = std::multimap<std::string, std::string>; // paths by their names without the extension
    std::map<std::string, Names> folders;
};
