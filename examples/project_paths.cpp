// Makes folders below FOLDER, lists them, and takes paths apart.
#include <iostream>
#include <string>

#include "orvo/path.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: project_paths FOLDER\n";
    return 2;
  }
  const std::string root = argv[1];
  try {
    for (const char* chapter : {"chapter10", "chapter9", "chapter1"}) {
      orvo::path::MakeDirectories(orvo::path::Join({root, "book", chapter}));
    }
  } catch (const orvo::path::PathError& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
  const std::string book = orvo::path::Join(root + "/", "//book");
  for (const std::string& name : orvo::path::entries(book)) {
    std::cout << orvo::path::relpath(orvo::path::Join(book, name), root)
              << "\n";
  }

  const std::string archive = "v1.2/notes";
  std::cout << "splitext  \"" << orvo::path::splitext(archive).second << "\"\n"
            << "extension \"" << orvo::path::extension(archive) << "\"\n"
            << "split     \"" << orvo::path::split("notes").first << "\"\n"
            << "dirname   \"" << orvo::path::dirname("notes") << "\"\n"
            << "relpath   \"" << orvo::path::relpath("/a/b/c", "/a/x")
            << "\"\n";
}
