#pragma once

#include <string>

/// A file under a name of its own in the folder of another one, which it is to replace. It goes with the object, and
/// with every signal that ends the program.
class TemporaryFile {
public:
    /// From now on the name for a path is the one that nameFor gives, for programs that never write an output twice at
    /// once: what a killed run leaves, the next one writes over.
    static void setOneWriterAName();
    static std::string nameFor(const std::string& path);

    /// For `path`. Not good() when it cannot be made; errno says why.
    explicit TemporaryFile(const std::string& path);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool good() const { return descriptor_ >= 0; }
    const std::string& name() const { return name_; }
    /// The caller closes it.
    int descriptor() const { return descriptor_; }
    /// Takes the place of `path`; unless `mayReplace`, only where there is nothing. False: errno says why.
    bool rename(const std::string& path, bool mayReplace);

private:
    std::string name_;
    int descriptor_ = -1;
};
