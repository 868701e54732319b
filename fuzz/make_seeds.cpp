/// Writes the inputs that fuzzing starts from: make_seeds FOLDER

#include <fstream>

#include "BuiltRegions.h"
#include "support/BuiltModel.h"
#include "support/GoodClip.h"
#include "support/Models.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const std::string whole = FileBuilder::whole().file;
    BRYXMetadataFactory factory;
    const auto model = builtModel();
    const auto storage = model->getContentStorage();
    const auto material = std::dynamic_pointer_cast<MaterialPackage>(storage->getPackageAt(0));
    ClipOptions small;
    small.frames = 2;
    small.pictureSize = 20;
    small.partitionDuration = 1;
    for (const std::string& seed : {GoodClip(small).octets, whole, "run-in" + whole, whole.substr(0, 300),
                                    coded(model, factory), coded((storage->removePackageAt(0), material), factory),
                                    builtBody(), builtBody() + builtBody(), builtIndex()}) {
        std::ofstream file(argv[1] + ("/seed" + std::to_string(seed.size())), std::ios::binary);
        file << seed << '\0';
        if (!file.flush()) {
            return 1;
        }
    }
    return 0;
}
