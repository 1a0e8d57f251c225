})();
globalThis.console = null;
(function() {
    for (;;) ;
