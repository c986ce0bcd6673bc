#pragma once

/// Adds the module "native" to the interpreter that is started next.
///
///     native.digest(path, progress)    the file's SHA-256 in hexadecimal; progress() is called meanwhile
///     native.application_class(index)  name of the host's application class, or of one of its bases
void addNativeModule();
