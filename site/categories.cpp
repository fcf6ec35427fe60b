// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's category directory.
#include "site/categories.h"

#include <cstring>

namespace lw::site {

const std::vector<Category>& Categories() {
    static const std::vector<Category> categories = {
        {101, "Antiques", "Furniture"},
        {102, "Antiques", "Silver"},
        {103, "Antiques", "Maps & Prints"},
        {104, "Antiques", "Clocks"},
        {105, "Antiques", "Textiles"},
        {201, "Books", "Fiction"},
        {202, "Books", "Children's Books"},
        {203, "Books", "Cookbooks"},
        {204, "Books", "First Editions"},
        {205, "Books", "Magazines"},
        {301, "Coins & Stamps", "US Coins"},
        {302, "Coins & Stamps", "World Coins"},
        {303, "Coins & Stamps", "Stamps"},
        {304, "Coins & Stamps", "Paper Money"},
        {401, "Collectibles", "Advertising"},
        {402, "Collectibles", "Kitchenware"},
        {403, "Collectibles", "Trading Cards"},
        {404, "Collectibles", "Postcards"},
        {405, "Collectibles", "Figurines"},
        {406, "Collectibles", "Tins & Boxes"},
        {501, "Computers", "Laptops"},
        {502, "Computers", "Peripherals"},
        {503, "Computers", "Software"},
        {504, "Computers", "Vintage Computing"},
        {601, "Dolls & Bears", "Dolls"},
        {602, "Dolls & Bears", "Teddy Bears"},
        {603, "Dolls & Bears", "Doll Houses"},
        {701, "Jewelry & Watches", "Rings"},
        {702, "Jewelry & Watches", "Wristwatches"},
        {703, "Jewelry & Watches", "Pocket Watches"},
        {704, "Jewelry & Watches", "Brooches"},
        {801, "Music", "Records"},
        {802, "Music", "Instruments"},
        {803, "Music", "Sheet Music"},
        {901, "Photo & Electronics", "Cameras"},
        {902, "Photo & Electronics", "Radios"},
        {903, "Photo & Electronics", "Audio"},
        {1001, "Pottery & Glass", "Art Glass"},
        {1002, "Pottery & Glass", "Stoneware"},
        {1003, "Pottery & Glass", "Porcelain"},
        {1101, "Sports", "Memorabilia"},
        {1102, "Sports", "Fishing"},
        {1103, "Sports", "Golf"},
        {1201, "Toys & Hobbies", "Model Trains"},
        {1202, "Toys & Hobbies", "Die-cast"},
        {1203, "Toys & Hobbies", "Games & Puzzles"},
        {1204, "Toys & Hobbies", "Tin Toys"},
        {1301, "Miscellaneous", "Tools"},
        {1302, "Miscellaneous", "Garden"},
        {1303, "Miscellaneous", "Everything Else"},
    };
    return categories;
}

const Category* FindCategory(int number) {
    for (const Category& category : Categories()) {
        if (category.number == number) {
            return &category;
        }
    }
    return nullptr;
}

std::string CategoryFullName(const Category& category) {
    return std::string(category.meta) + ": " + category.name;
}

std::string CategoryFileText() {
    std::string text;
    const char* group = nullptr;
    for (const Category& category : Categories()) {
        if (!group || std::strcmp(group, category.meta) != 0) {
            if (group) {
                text += "\r\n";
            }
            group = category.meta;
            text += std::string("[") + group + "]\r\n";
        }
        text += std::string(category.name) + "=" + std::to_string(category.number) + "\r\n";
    }
    return text;
}

}  // namespace lw::site
