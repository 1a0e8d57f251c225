const o = {notifications: [{message: 'cycle'}]};
o.self = o;
o.list = [o, [o]];
return o;
