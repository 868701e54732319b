/// Writes the inputs that fuzzing starts from: make_seeds FOLDER

#include <fstream>

#include "support/Octets.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const std::string whole = FileBuilder::whole().file;
    for (const std::string& seed : {whole, "run-in" + whole, whole.substr(0, 300)}) {
        std::ofstream file(argv[1] + ("/seed" + std::to_string(seed.size())), std::ios::binary);
        file << seed << '\0';
        if (!file.flush()) {
            return 1;
        }
    }
    return 0;
}
