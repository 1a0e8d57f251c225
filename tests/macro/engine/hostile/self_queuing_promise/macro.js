(function again() {
    Promise.resolve().then(again);
})();
return {};
