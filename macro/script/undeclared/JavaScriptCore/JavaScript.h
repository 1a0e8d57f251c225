#pragma once

// The part of the engine's C interface that is used here, for the library javascriptcoregtk-6.0: it
// exports the whole interface but comes without these headers. Where the engine's own headers are
// installed, they are used instead.

#include <cstddef>

extern "C" {

// NOLINTBEGIN(readability-identifier-naming, modernize-use-using): the engine's own names.
using JSChar = unsigned short;
using JSContextGroupRef = const struct OpaqueJSContextGroup *;
using JSContextRef = const struct OpaqueJSContext *;
using JSGlobalContextRef = struct OpaqueJSContext *;
using JSStringRef = struct OpaqueJSString *;
using JSClassRef = struct OpaqueJSClass *;
using JSPropertyNameArrayRef = struct OpaqueJSPropertyNameArray *;
using JSValueRef = const struct OpaqueJSValue *;
using JSObjectRef = struct OpaqueJSValue *;

enum JSType : unsigned {
    kJSTypeUndefined,
    kJSTypeNull,
    kJSTypeBoolean,
    kJSTypeNumber,
    kJSTypeString,
    kJSTypeObject,
    kJSTypeSymbol,
    kJSTypeBigInt
};

enum JSTypedArrayType : unsigned { kJSTypedArrayTypeNone = 10 };

enum : unsigned { kJSPropertyAttributeNone = 0 };

using JSObjectCallAsFunctionCallback = JSValueRef (*)(JSContextRef context,
                                                      JSObjectRef function,
                                                      JSObjectRef thisObject,
                                                      std::size_t argumentCount,
                                                      const JSValueRef arguments[],
                                                      JSValueRef *exception);

// Members that are not used are declared as pointers of any type.
struct JSClassDefinition
{
    int version;
    unsigned attributes;
    const char *className;
    JSClassRef parentClass;
    const void *staticValues;
    const void *staticFunctions;
    void (*initialize)();
    void (*finalize)();
    void (*hasProperty)();
    void (*getProperty)();
    void (*setProperty)();
    void (*deleteProperty)();
    void (*getPropertyNames)();
    JSObjectCallAsFunctionCallback callAsFunction;
    void (*callAsConstructor)();
    void (*hasInstance)();
    void (*convertToType)();
};

extern const JSClassDefinition kJSClassDefinitionEmpty;

JSContextGroupRef JSContextGroupCreate();
void JSContextGroupRelease(JSContextGroupRef group);
JSGlobalContextRef JSGlobalContextCreateInGroup(JSContextGroupRef group, JSClassRef globalObject);
void JSGlobalContextRelease(JSGlobalContextRef context);
JSObjectRef JSContextGetGlobalObject(JSContextRef context);
JSValueRef JSEvaluateScript(JSContextRef context,
                            JSStringRef script,
                            JSObjectRef thisObject,
                            JSStringRef sourceUrl,
                            int firstLine,
                            JSValueRef *exception);

JSStringRef JSStringCreateWithCharacters(const JSChar *units, std::size_t length);
std::size_t JSStringGetLength(JSStringRef string);
const JSChar *JSStringGetCharactersPtr(JSStringRef string);
void JSStringRelease(JSStringRef string);

JSType JSValueGetType(JSContextRef context, JSValueRef value);
JSTypedArrayType
JSValueGetTypedArrayType(JSContextRef context, JSValueRef value, JSValueRef *exception);
bool JSValueIsArray(JSContextRef context, JSValueRef value);
bool JSValueIsDate(JSContextRef context, JSValueRef value);
bool JSValueIsNumber(JSContextRef context, JSValueRef value);
bool JSValueIsObject(JSContextRef context, JSValueRef value);
bool JSValueIsString(JSContextRef context, JSValueRef value);
bool JSValueIsUndefined(JSContextRef context, JSValueRef value);
JSValueRef JSValueMakeNull(JSContextRef context);
JSValueRef JSValueMakeNumber(JSContextRef context, double number);
JSValueRef JSValueMakeString(JSContextRef context, JSStringRef string);
JSValueRef JSValueMakeUndefined(JSContextRef context);
bool JSValueToBoolean(JSContextRef context, JSValueRef value);
double JSValueToNumber(JSContextRef context, JSValueRef value, JSValueRef *exception);
JSObjectRef JSValueToObject(JSContextRef context, JSValueRef value, JSValueRef *exception);
JSStringRef JSValueToStringCopy(JSContextRef context, JSValueRef value, JSValueRef *exception);
void JSValueProtect(JSContextRef context, JSValueRef value);
void JSValueUnprotect(JSContextRef context, JSValueRef value);

JSClassRef JSClassCreate(const JSClassDefinition *definition);
void JSClassRelease(JSClassRef cls);
JSObjectRef JSObjectMake(JSContextRef context, JSClassRef cls, void *data);
void *JSObjectGetPrivate(JSObjectRef object);
void JSObjectSetPrototype(JSContextRef context, JSObjectRef object, JSValueRef prototype);
JSValueRef JSObjectGetProperty(JSContextRef context,
                               JSObjectRef object,
                               JSStringRef name,
                               JSValueRef *exception);
JSValueRef JSObjectGetPropertyAtIndex(JSContextRef context,
                                      JSObjectRef object,
                                      unsigned index,
                                      JSValueRef *exception);
void JSObjectSetProperty(JSContextRef context,
                         JSObjectRef object,
                         JSStringRef name,
                         JSValueRef value,
                         unsigned attributes,
                         JSValueRef *exception);
JSPropertyNameArrayRef JSObjectCopyPropertyNames(JSContextRef context, JSObjectRef object);
std::size_t JSPropertyNameArrayGetCount(JSPropertyNameArrayRef names);
JSStringRef JSPropertyNameArrayGetNameAtIndex(JSPropertyNameArrayRef names, std::size_t index);
void JSPropertyNameArrayRelease(JSPropertyNameArrayRef names);
// NOLINTEND(readability-identifier-naming, modernize-use-using)

} // extern "C"
